#pragma once

#include "platform/Histogram.h"

/** How long the clicks since the start took, from the body of the request to the reply. Any thread. */
CHistogram& ClickTimes();

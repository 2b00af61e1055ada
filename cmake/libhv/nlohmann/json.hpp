// libhv's headers bring a copy of this library of their own, under the same include guard: whichever comes first
// in a file is the one that the file gets. So all files of the tree get that one.
#pragma once

#include <hv/json.hpp>

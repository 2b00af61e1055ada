#pragma once

#include "versions/VersionProblem.h"

#include <string>

/** What a client is told about a problem: a sentence. @param isChinese  else English */
std::string VersionProblemText(EnVersionProblem problem, bool isChinese);

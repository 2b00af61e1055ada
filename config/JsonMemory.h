#pragma once

#include <cstdint>
#include <string_view>

/**
 * Estimates the memory in bytes that a JSON text takes when it becomes a document: its values, the copy of
 * them that is saved, and the indented text of the save. By one pass over the text's bytes, before anything
 * is made of it: "[]," becomes more than thirty times as much as it is long, and a number that stands deep
 * is indented with four blanks for each level. Too much rather than too little; 0 for a text that is nested
 * too deep (JsonDepth.h). Any thread.
 */
std::uint64_t EstimateJsonMemory(std::string_view text);

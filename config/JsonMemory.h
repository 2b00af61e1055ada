#pragma once

#include <cstdint>
#include <string_view>

/**
 * Estimates how many bytes of memory a JSON text takes as a document: its values, the copy of them that is
 * saved, and the indented text of the save. Takes one pass over the text's bytes, before anything is made
 * from it. That is needed since "[]," becomes more than thirty times as large as its text, and a number that
 * is nested deep is indented by four blanks for each level. Rather too much than too little; 0 for a text
 * that is nested too deep (JsonDepth.h). Any thread.
 */
std::uint64_t EstimateJsonMemory(std::string_view text);

#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

/**
 * Compresses texts, one after the other, into one gzip stream (RFC 1952). The level takes about as long as
 * making the JSON text did, even when the text contains pictures in base64.
 * @param texts  together below 2 GiB
 * @throw std::bad_alloc
 */
std::string Gzip(std::initializer_list<std::string_view> texts);

#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

/**
 * Compresses texts, one behind the other, into one piece with gzip (RFC 1952), at a level that takes about as
 * long as making the JSON text did, also where pictures in base64 lie in it.
 * @param texts  together below 2 GiB
 * @throw std::bad_alloc
 */
std::string Gzip(std::initializer_list<std::string_view> texts);

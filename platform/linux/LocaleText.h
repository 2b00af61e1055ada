#pragma once

#include <istream>
#include <string>
#include <string_view>

/**
 * The locale name with a hyphen of a POSIX locale: "zh_CN.UTF-8@pinyin" gives "zh-CN". "C" and "POSIX", with
 * or without a character set, give nothing.
 */
std::wstring LocaleNameOfPosix(std::string_view posixName);

/**
 * The locale that a file of shell assignments such as /etc/locale.conf names by LC_ALL, else LC_MESSAGES,
 * else LANG; quotes are taken off. Empty when it names none.
 */
std::string LocaleOfSettings(std::istream& settings);

#pragma once

#include <istream>
#include <string>
#include <string_view>

/**
 * The locale name with a hyphen for a POSIX locale: "zh_CN.UTF-8@pinyin" gives "zh-CN". "C" and "POSIX", with
 * or without a character set, give an empty text.
 */
std::wstring LocaleNameOfPosix(std::string_view posixName);

/**
 * The locale that a file of shell assignments such as /etc/locale.conf sets by LC_ALL, otherwise LC_MESSAGES,
 * otherwise LANG, without quotes. Empty when it sets none.
 */
std::string LocaleOfSettings(std::istream& settings);

#include "equipment/values/EquipmentConfig.h"

#include "equipment/values/ConfigFields.h"

#include <algorithm>
#include <limits>
#include <set>

using nlohmann::json;

namespace {

constexpr std::int64_t kVersion = 1;
constexpr std::size_t kMostDevices = 1000;
constexpr std::size_t kMostValues = 10000;
constexpr std::size_t kMostPatterns = 10000;  // of one device
constexpr std::size_t kMostPolls = 100;       // of one device
constexpr std::size_t kMostRows = 1000;       // of one table
constexpr std::size_t kLongestContent = 4096;
constexpr std::size_t kLongestName = 80;  // characters
constexpr std::int64_t kFastestPoll = 100;
constexpr std::int64_t kDay = std::int64_t{24} * 3600;
constexpr std::int64_t kLongestSilence = 10000;
constexpr std::int64_t kUsualStaleAfter = 30;

/** The bytes of a terminator. */
std::string BytesOf(const std::string& digits) {
    std::string bytes;
    const bool areDigits = digits.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos;
    if (!areDigits || digits.empty() || digits.size() % 2 != 0 || digits.size() > 2 * kLongestTerminator) {
        throw CConfigProblem(
            "The end of a message is 1 to 8 bytes in hexadecimal digits. For carriage return type 0D.",
            "消息结尾应为 1 到 8 个字节的十六进制数。回车请输入 0D。");
    }
    for (std::size_t at = 0; at < digits.size(); at += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(at, 2), nullptr, 16));
    }
    return bytes;
}

/** Whether the name of a value can be. */
bool IsValueName(const std::string& name) {
    const auto characters = std::count_if(name.begin(), name.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
    });
    return !name.empty() && characters <= static_cast<std::ptrdiff_t>(kLongestName) && name.front() != ' ' &&
           name.back() != ' ' && std::none_of(name.begin(), name.end(), [](char byte) {
               const auto value = static_cast<unsigned char>(byte);
               return value < 0x20 || value == 0x7F || byte == '{' || byte == '}' || byte == ',' ||
                      byte == ':';
           });
}

void ReadTable(const json& rule, SValueRule& value) {
    for (const json& row : ListField(rule, "table", kMostRows)) {
        std::string to = TextField(row, "to", kLongestContent);
        if (value.isNumber && !ParseNumber(to)) {
            throw CConfigProblem(
                "The value \"" + value.name + "\" is a number, but its table gives \"" + to +
                    "\". Type a number there, or make the value a text.",
                "“" + value.name + "”是数字，但其对照表给出“" + to + "”。请改为数字，或将该值改为文本。");
        }
        value.table.emplace(TextField(row, "from", kLongestContent), std::move(to));
    }
}

SValueRule ReadValue(const json& rule, const CMessagePattern& pattern) {
    SValueRule value;
    value.name = TextField(rule, "name", 4 * kLongestName);
    if (!IsValueName(value.name)) {
        throw CConfigProblem(
            "The name \"" + value.name +
                "\" can't be used. A value's name has 1 to 80 characters, no braces, colons, "
                "commas and control characters, and no blank at its ends.",
            "名称“" + value.name +
                "”无法使用。名称应为 1 到 80 个字符，不含大括号、冒号、逗号和控制字符，首尾"
                "不能有空格。");
    }
    const std::string place = TextField(rule, "place", kLongestContent);
    const auto& places = pattern.Places();
    const auto found = std::find(places.begin(), places.end(), place);
    if (found == places.end()) {
        throw CConfigProblem("The value \"" + value.name + "\" comes from the place {" + place +
                                 "}, which its pattern does not have. Add the place to the pattern.",
                             "“" + value.name + "”取自位置 {" + place + "}，但模式中没有该位置。请加上。");
    }
    value.place = static_cast<std::size_t>(found - places.begin());
    const std::string type = TextField(rule, "type", kLongestContent);
    if (type != "text" && type != "number") {
        throw CConfigProblem("The type of the value \"" + value.name + "\" is \"text\" or \"number\".",
                             "“" + value.name + "”的类型应为 \"text\" 或 \"number\"。");
    }
    value.isNumber = type == "number";
    value.scale = RealField(rule, "scale", 1);
    value.offset = RealField(rule, "offset", 0);
    ReadTable(rule, value);
    return value;
}

SPoll ReadPoll(const json& rule) {
    SPoll poll;
    poll.content = TextField(rule, "content", kLongestContent);
    constexpr std::int64_t none = 0;
    poll.isText = NumberField(rule, "contentFormat", 0, 1, &none) == 0;
    poll.asciiEncode = static_cast<int>(NumberField(rule, "asciiEncode", 0, 2, &none));
    const std::int64_t every = NumberField(rule, "everyMs", std::numeric_limits<std::int32_t>::min(),
                                           std::numeric_limits<std::int32_t>::max());
    if (every < kFastestPoll || every > kDay * 1000) {
        throw CConfigProblem(
            "A device can be asked every 100 ms at most, and once a day at least. Choose another time.",
            "询问设备的间隔应在 100 毫秒到一天之间，请另选时间。");
    }
    poll.every = std::chrono::milliseconds(every);
    poll.always = FlagField(rule, "always");
    if (poll.content.empty()) {
        throw CConfigProblem("A question to a device is empty. Type what is to be sent, or remove it.",
                             "对设备的询问为空。请输入要发送的内容，或将其删除。");
    }
    return poll;
}

SDeviceRule ReadDevice(const json& rule) {
    SDeviceRule device;
    device.nodeId = static_cast<std::int32_t>(NumberField(
        rule, "nodeId", std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
    const json* const framing = FindField(rule, "framing");
    device.framing = ParseFraming(framing == nullptr ? json() : *framing);
    device.staleAfter =
        std::chrono::seconds(NumberField(rule, "staleAfterSeconds", 0, 365 * kDay, &kUsualStaleAfter));
    for (const json& poll : ListField(rule, "polls", kMostPolls)) {
        device.polls.push_back(ReadPoll(poll));
    }
    for (const json& pattern : ListField(rule, "patterns", kMostPatterns)) {
        device.patterns.push_back(ParsePatternRule(pattern, device.framing));
    }
    return device;
}

void CheckVersion(const json& document) {
    const std::int64_t version =
        NumberField(document, "version", kVersion, std::numeric_limits<std::int32_t>::max());
    if (version > kVersion) {
        throw CConfigProblem("The document of the values comes from a newer version of this product (form " +
                                 std::to_string(version) + "). Update the server, and store it again then.",
                             "数值文档来自更新版本的产品（格式 " + std::to_string(version) +
                                 "）。请先更新服务器，再重新保存。");
    }
}

/** Numbers the values. @throw CConfigProblem  when two values have one name, or there are too many */
void AddNames(SDeviceRule& device, std::set<std::string>& names) {
    for (SPatternRule& pattern : device.patterns) {
        for (SValueRule& value : pattern.values) {
            value.index = names.size();
            if (!names.insert(value.name).second) {
                throw CConfigProblem("Two values have the name \"" + value.name + "\". Rename one of them.",
                                     "有两个值同名：“" + value.name + "”。请修改其中一个名称。");
            }
            if (names.size() > kMostValues) {
                throw CConfigProblem("There are more than 10000 values. Remove some of them.",
                                     "值的数量超过 10000 个，请删除一部分。");
            }
        }
    }
}

}  // namespace

SFraming ParseFraming(const json& framing) {
    SFraming made;
    const std::string kind = framing.is_object() ? framing.value("kind", json()).dump() : "";
    if (kind == "\"terminator\"") {
        made.terminator = BytesOf(TextField(framing, "hex", kLongestContent));
    } else if (kind == "\"length\"") {
        made.kind = SFraming::EnKind::Length;
        made.length = static_cast<std::size_t>(
            NumberField(framing, "bytes", 1, static_cast<std::int64_t>(kLongestMessage)));
    } else if (kind == "\"silence\"") {
        made.kind = SFraming::EnKind::Silence;
        made.silence = std::chrono::milliseconds(NumberField(framing, "ms", 1, kLongestSilence));
    } else {
        throw CConfigProblem(
            "A device does not say how its messages end. Choose an end, a length or a silence.",
            "某个设备未指定消息如何结束。请选择结束符、长度或静默时间。");
    }
    return made;
}

SPatternRule ParsePatternRule(const json& rule, const SFraming& framing) {
    const std::string form = TextField(rule, "form", kLongestContent);
    const std::string pattern = TextField(rule, "pattern", 16 * kLongestMessage);
    if (form != "text" && form != "hex") {
        throw CConfigProblem("The form of the pattern \"" + pattern + "\" is \"text\" or \"hex\".",
                             "模式“" + pattern + "”的形式应为 \"text\" 或 \"hex\"。");
    }
    SPatternRule made{form == "text" ? CMessagePattern::FromText(pattern, framing.terminator)
                                     : CMessagePattern::FromHex(pattern, framing.terminator),
                      {}};
    for (const json& value : ListField(rule, "values", kMostValues)) {
        made.values.push_back(ReadValue(value, made.pattern));
    }
    return made;
}

SEquipmentConfig ParseEquipmentConfig(const json& document) {
    SEquipmentConfig config;
    if (document.is_null()) {
        return config;
    }
    CheckVersion(document);
    std::set<std::int32_t> nodeIds;
    std::set<std::string> names;
    for (const json& rule : ListField(document, "devices", kMostDevices)) {
        config.devices.push_back(ReadDevice(rule));
        SDeviceRule& device = config.devices.back();
        if (!nodeIds.insert(device.nodeId).second) {
            throw CConfigProblem(
                "Two devices have the interface " + std::to_string(device.nodeId) +
                    ". Put their patterns into one of them.",
                "有两个设备使用接口 " + std::to_string(device.nodeId) + "。请将其模式合并到一个设备。");
        }
        AddNames(device, names);
    }
    return config;
}

// Any document of values, and any bytes of the devices: it is refused, or the bytes are cut into the same
// messages however they arrive, and what is found in them can be sent. The document ends at the first line
// break.
#include "config/JsonDepth.h"
#include "equipment/values/EquipmentConfig.h"
#include "tests/fuzz/FuzzTarget.h"

namespace {

using nlohmann::json;

std::vector<std::string> Cut(const SFraming& framing, std::string_view bytes, std::size_t step) {
    std::vector<std::string> messages;
    const auto take = [&](std::string_view message) {
        Require(!message.empty() && message.size() <= kLongestMessage);
        messages.emplace_back(message);
    };
    CMessageCutter cutter(framing);
    for (; !bytes.empty(); bytes.remove_prefix(std::min(step, bytes.size()))) {
        cutter.Add(bytes.substr(0, step), take);
    }
    if (cutter.WaitsForSilence()) {
        cutter.EndBySilence(take);
    }
    return messages;
}

void CheckPattern(const SPatternRule& rule, const std::string& message) {
    std::vector<std::string> captures;
    if (!rule.pattern.Match(message, captures)) {
        return;
    }
    Require(captures.size() == rule.pattern.Places().size());
    for (const SValueRule& value : rule.values) {
        const auto content = value.Apply(captures.at(value.place));
        Require(content.has_value() || value.isNumber);
        if (content && !value.isNumber) {
            Require(!json(std::get<std::string>(*content)).dump().empty());
        }
    }
}

}  // namespace

FUZZ_TARGET(equipment) {
    const std::size_t end = bytes.find('\n');
    const std::string_view text = bytes.substr(0, end);
    const std::string_view sent = end == std::string_view::npos ? std::string_view() : bytes.substr(end + 1);
    const json document = IsNestedTooDeep(text) ? json() : json::parse(text, nullptr, false);
    try {
        for (const SDeviceRule& device : ParseEquipmentConfig(document).devices) {
            const std::vector<std::string> messages = Cut(device.framing, sent, sent.size());
            Require(messages == Cut(device.framing, sent, 1) && messages == Cut(device.framing, sent, 7));
            for (const std::string& message : messages) {
                for (const SPatternRule& rule : device.patterns) {
                    CheckPattern(rule, message);
                }
            }
        }
    } catch (const CConfigProblem& problem) {
        Require(!json(problem.what()).dump().empty() && !json(problem.Chinese()).dump().empty());
    }
}

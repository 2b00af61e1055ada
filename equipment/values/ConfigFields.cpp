#include "equipment/values/ConfigFields.h"

#include "equipment/values/ConfigProblem.h"

#include <cmath>

using nlohmann::json;

namespace {

CConfigProblem Problem(const char* key, const std::string& english, const std::string& chinese) {
    return {"In the document of the values, \"" + std::string(key) + "\" must be " + english + ".",
            "数值文档中的“" + std::string(key) + "”应为" + chinese + "。"};
}

const json& Required(const json& object, const char* key) {
    const json* const field = FindField(object, key);
    if (field == nullptr) {
        throw CConfigProblem(
            "In the document of the values, \"" + std::string(key) + "\" is missing. Add it.",
            "数值文档缺少“" + std::string(key) + "”，请补上。");
    }
    return *field;
}

}  // namespace

const json* FindField(const json& object, const char* key) {
    if (!object.is_object()) {
        throw CConfigProblem(
            "In the document of the values, the place of \"" + std::string(key) + "\" must be an object.",
            "数值文档中“" + std::string(key) + "”所在处应为对象。");
    }
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

std::int64_t NumberField(const json& object, const char* key, std::int64_t least, std::int64_t most,
                         const std::int64_t* missing) {
    if (missing != nullptr && FindField(object, key) == nullptr) {
        return *missing;
    }
    const json& field = Required(object, key);
    const double value = field.is_number() ? field.get<double>() : std::nan("");
    if (!(value >= static_cast<double>(least) && value <= static_cast<double>(most)) ||
        value != std::floor(value)) {
        const std::string from = std::to_string(least);
        const std::string to = std::to_string(most);
        throw Problem(key, "a whole number from " + from + " to " + to, " " + from + " 到 " + to + " 的整数");
    }
    return static_cast<std::int64_t>(value);
}

double RealField(const json& object, const char* key, double missing) {
    const json* const field = FindField(object, key);
    if (field == nullptr) {
        return missing;
    }
    if (!field->is_number() || !std::isfinite(field->get<double>())) {
        throw Problem(key, "a number", "数字");
    }
    return field->get<double>();
}

bool FlagField(const json& object, const char* key) {
    const json* const field = FindField(object, key);
    if (field != nullptr && !field->is_boolean()) {
        throw Problem(key, "true or false", " true 或 false");
    }
    return field != nullptr && field->get<bool>();
}

std::string TextField(const json& object, const char* key, std::size_t most) {
    const json& field = Required(object, key);
    if (!field.is_string() || field.get_ref<const std::string&>().size() > most) {
        throw Problem(key, "a text of at most " + std::to_string(most) + " bytes",
                      "不超过 " + std::to_string(most) + " 字节的文本");
    }
    return field.get<std::string>();
}

const json& ListField(const json& object, const char* key, std::size_t most) {
    static const json empty = json::array();
    const json* const field = FindField(object, key);
    if (field == nullptr) {
        return empty;
    }
    if (!field->is_array() || field->size() > most) {
        throw Problem(key, "a list of at most " + std::to_string(most) + " elements",
                      "不超过 " + std::to_string(most) + " 项的列表");
    }
    return *field;
}

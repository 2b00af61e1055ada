#include "config/JsonFile.h"

#include "config/DocumentSave.h"
#include "config/InPlaceSave.h"
#include "config/JsonDepth.h"
#include "config/StandardOutput.h"
#include "platform/FileStreams.h"

#include <array>
#include <ios>
#include <sstream>

namespace {

/** @throw std::ios_base::failure when the file can't be read to its end */
std::string ReadAll(std::ifstream& file) {
    std::string text;
    std::array<char, 65536> part{};
    while (file) {
        file.read(part.data(), part.size());
        text.append(part.data(), static_cast<std::size_t>(file.gcount()));
    }
    if (file.bad()) {
        throw std::ios_base::failure("the file can't be read");
    }
    return text;
}

}  // namespace

nlohmann::json LoadJsonFromFile(const std::string& path) {
    nlohmann::json document;
    std::ifstream file = OpenTextForReading(path);
    if (!file) {
        PrintLine("JSON Load Error: Failed to open file" + path);
        return document;
    }
    try {
        std::string text = ReadAll(file);
        if (IsNestedTooDeep(text)) {
            PrintLine("LoadJsonFromFile Error: nested deeper than " + std::to_string(kMaxJsonDepth) +
                      " levels: " + path);
            return document;
        }
        std::istringstream stream(std::move(text));
        stream >> document;
    } catch (const nlohmann::json::parse_error& error) {
        PrintLine(std::string("LoadJsonFromFile JsonError: ") + error.what());
    } catch (const std::exception& error) {
        PrintLine(std::string("LoadJsonFromFile Error: ") + error.what());
    }
    return document;
}

void SaveJsonToFile(const nlohmann::json& document, const std::string& path) try {
    if (const auto problem =
            WriteInPlace(path, [&document](std::ostream& file) { file << SerialiseDocument(document); })) {
        TellSaveProblem(*problem, path);
    }
} catch (const std::exception& error) {
    TellSaveProblem({std::string("SaveJsonToFile Error: ") + error.what(), error.what(), false}, path);
}

void SaveJsonWithBackup(const nlohmann::json& document, const std::string& path) try {
    if (const auto problem = CDocumentSave(document, path).Try()) {
        TellSaveProblem(*problem, path);
    }
} catch (const std::exception& error) {
    TellSaveProblem({std::string("SaveJsonToFile Error: ") + error.what(), error.what(), false}, path);
}

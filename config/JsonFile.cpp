#include "config/JsonFile.h"

#include "config/DocumentBackup.h"
#include "config/JsonDepth.h"
#include "config/StandardOutput.h"
#include "platform/FileStreams.h"
#include "platform/RavLog.h"

#include <array>
#include <ios>
#include <sstream>

namespace {

constexpr int g_indentation = 4;

std::string Serialise(const nlohmann::json& document) {
    return document.dump(g_indentation, ' ', false, nlohmann::json::error_handler_t::strict);
}

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

void LogError(const std::string& line, const std::string& path) {
    RavLog::WriteSystemLog(RavLog::Error, "SaveJsonToFile", line + " [" + path + "]");
}

void TellFailure(const std::string& line, const std::string& path) {
    PrintLine(line);
    LogError(line, path);
}

/** The save in place; makeText is called when the file is open and empty. */
template <typename MakeText>
void SaveInPlace(const std::string& path, MakeText makeText) {
    std::ofstream file = OpenTextForWriting(path);
    if (!file) {
        TellFailure("JSON Save Error:Failed to create file", path);
        return;
    }
    try {
        file << makeText();
        file.close();
        if (!file) {
            LogError("SaveJsonToFile Error: the document could not be written to its end", path);
        }
    } catch (const nlohmann::json::parse_error& error) {
        TellFailure(std::string("SaveJsonToFile JsonError: ") + error.what(), path);
    } catch (const std::exception& error) {
        TellFailure(std::string("SaveJsonToFile Error: ") + error.what(), path);
    }
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
            PrintLine("LoadJsonFromFile Error: nested deeper than " + std::to_string(g_maxJsonDepth) +
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

void SaveJsonToFile(const nlohmann::json& document, const std::string& path) {
    SaveInPlace(path, [&document] { return Serialise(document); });
}

void SaveJsonWithBackup(const nlohmann::json& document, const std::string& path) {
    std::string text;
    try {
        text = Serialise(document);
    } catch (const std::exception&) {
        SaveJsonToFile(document, path);  // meets the same error and tells it
        return;
    }
    if (const std::error_code error = WriteBackup(path, text)) {
        if (error == std::errc::no_space_on_device) {
            TellFailure("SaveJsonToFile Error: " + error.message(), path);
            return;
        }
        LogError("the backup could not be written: " + error.message(), path);
    }
    SaveInPlace(path, [&text]() -> const std::string& { return text; });
}

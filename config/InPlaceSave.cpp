#include "config/InPlaceSave.h"

#include "config/StandardOutput.h"
#include "platform/FileStreams.h"
#include "platform/RavLog.h"

#include <new>

namespace {

constexpr int kIndentation = 4;

SSaveProblem Told(const std::string& line, bool canBeTried) {
    return {line, line, canBeTried};
}

}  // namespace

std::string SerialiseDocument(const nlohmann::json& document) {
    return document.dump(kIndentation, ' ', false, nlohmann::json::error_handler_t::strict);
}

std::optional<SSaveProblem> WriteInPlace(const std::string& path,
                                         const std::function<void(std::ostream&)>& write) {
    std::ofstream file = OpenTextForWriting(path);
    if (!file) {
        return Told("JSON Save Error:Failed to create file", true);
    }
    try {
        write(file);
        file.close();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const nlohmann::json::parse_error& error) {
        return Told(std::string("SaveJsonToFile JsonError: ") + error.what(), false);
    } catch (const std::exception& error) {
        return Told(std::string("SaveJsonToFile Error: ") + error.what(), false);
    }
    if (!file) {
        return SSaveProblem{{}, "SaveJsonToFile Error: the document could not be written to its end", true};
    }
    return std::nullopt;
}

void TellSaveProblem(const SSaveProblem& problem, const std::string& path) {
    if (!problem.line.empty()) {
        PrintLine(problem.line);
    }
    RavLog::WriteSystemLog(RavLog::Error, "SaveJsonToFile", problem.text + " [" + path + "]");
}

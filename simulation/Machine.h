#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace simulation {

/**
 * Makes a folder the home of the user for this process, and creates the Documents folder in it. On Windows
 * the user's folder "Personal" has to be "%SERVER_HOME%\Documents", as set up by scripts/wine-run.
 */
void SetHome(const std::filesystem::path& folder);

/** The changes of the environment that do the same for a child process (ProcessOptions::environment). */
std::vector<std::string> HomeEnvironment(const std::filesystem::path& folder);

/** Sets an environment variable of this process; null removes it. */
void SetVariable(const char* name, const char* value);

/** Makes this the user's locale: "zh_CN.UTF-8" and the like, "" for none. */
void SetLocale(const std::string& posixName);

/**
 * Creates a link to a file or folder. @return false when that needs special rights; nothing was created then
 */
bool MakeLink(const std::filesystem::path& target, const std::filesystem::path& link);

/** A file that takes no bytes, since its disk is full; empty on systems without such a file. */
const char* FullDisk();

/** A file whose reading fails; empty on systems without such a file. */
const char* UnreadableFile();

/** Folder of the running program. */
std::filesystem::path ProgramFolder();

/**
 * The differences between the two systems that the tests expect; everything else is the same.
 * docs/platforms.md gives the reasons.
 */
struct Differences {
    /** Bytes at the end of a line of a document, and of a record of ClientError.log. */
    static const char* const kDocumentLineEnd;
    static const char* const kRecordEnd;

    /** The folder of the user's documents below the Documents folder. */
    static const char* const kUserFolder;

    /** Names of files are case-sensitive, and keep blanks and dots at their end. */
    static const bool kNamesAsWritten;

    /** A file that a program has open can be removed. */
    static const bool kRemovesOpenFiles;

    /** A folder can't be renamed while a file below it is open, or the file goes with it; Wine loses it. */
    static const bool kKeepsOpenFilesInFolders;

    /** A program that was started without a standard stream keeps the number of it free. */
    static const bool kKeepsMissingStreams;

    /** The system can write GB18030; Wine can't, Windows can. */
    static const bool kHasGb18030;

    /** The system reports whether a peer has acknowledged all bytes; Wine doesn't, Windows does. */
    static const bool kTellsWhatIsUnacknowledged;

    /** A read of a serial line ends with the first bytes; Wine waits until there is no room left for more. */
    static const bool kHearsLines;

    /** The system survives hundreds of connections that are cut while they are made; Wine 8 does not. */
    static const bool kStandsManyCuts;

    /** The system reports which process listens on a port; Wine doesn't, Windows does. */
    static const bool kTellsWhoListens;

    /** Serial ports are found by the system's own list, which a test can't fill. */
    static const bool kHasPortList;

    /** The system's figures for memory and descriptors in use cover only the server, and not Wine too. */
    static const bool kMeasuresProcess;
};

/** The text that follows the number in the message of a failed command. */
std::string ErrorText(unsigned code);

}  // namespace simulation

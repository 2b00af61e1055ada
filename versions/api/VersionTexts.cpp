#include "versions/api/VersionTexts.h"

namespace {

struct STexts {
    const char* english;
    const char* chinese;
};

STexts TextsOf(EnVersionProblem problem) {
    switch (problem) {
        case EnVersionProblem::Missing:
            return {"This version does not exist. It may have been cleared away.",
                    "该版本不存在，可能已被清理。"};
        case EnVersionProblem::Torn:
            return {"This version is damaged. Nothing has been changed.", "该版本已损坏，未做任何更改。"};
        case EnVersionProblem::BadCommands:
            return {"The commands of this version can't be used. Nothing has been changed.",
                    "该版本的命令无法使用，未做任何更改。"};
        case EnVersionProblem::NotKept:
            return {"The present state could not be kept, so nothing has been changed. Is the disk full?",
                    "无法保留当前状态，因此未做任何更改。磁盘是否已满？"};
        case EnVersionProblem::Busy:
            return {"Somebody else is saving at this moment. Nothing has been changed; try again.",
                    "其他人正在保存，未做任何更改，请重试。"};
        case EnVersionProblem::NameTooLong:
            return {"A name can have 80 characters at most.", "名称最多 80 个字符。"};
        case EnVersionProblem::NameUnreadable:
            return {"A name can't contain line breaks or other control characters.",
                    "名称不能包含换行符或其他控制字符。"};
        case EnVersionProblem::NamesTakeRoom:
            return {"The versions with names take too much room. Remove the name of another one first.",
                    "已命名的版本占用空间过多，请先移除其他版本的名称。"};
        case EnVersionProblem::NameNotStored:
            return {"The name could not be stored. Is the disk full?", "无法保存名称。磁盘是否已满？"};
    }
    return {};
}

}  // namespace

std::string VersionProblemText(EnVersionProblem problem, bool isChinese) {
    const STexts texts = TextsOf(problem);
    return isChinese ? texts.chinese : texts.english;
}

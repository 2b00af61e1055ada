#include "userdata/BoardInfo.h"

nlohmann::json CreateDefaultBoardInfo() {
    using nlohmann::json;
    const json boardMark = {{"boardClass", "centralControl"},
                            {"boardId", 4112},
                            {"boardIndex", 12},
                            {"boardType", "centralControlBoard"}};
    const json placeholder = {{"interfaceInfo", ""}, {"interfaceMark", ""}};
    const json board = {{"boardDataType", "centralControlBoard"},
                        {"centralControlBoardInfo",
                         {{"boardMark", boardMark}, {"interfaceInfoArr", json::array({placeholder})}}},
                        {"isExistBoard", 1},
                        {"isPositionAbnormal", 0},
                        {"statusCode", 0}};
    return {{"centralControlBoardCount", 1}, {"centralControlBoardInfoArr", json::array({board})}};
}

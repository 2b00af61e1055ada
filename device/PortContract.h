#pragma once

#include "platform/PortRecords.h"
#include "server/RouterMgr.h"
#include "userdata/InterfaceModel.h"

/**
 * Whether an interface may have this name and these end points.
 * @param exists  true: the interface nodeId itself is left out of the comparison
 * @return CodeSuccess, CodeNameTaken or CodeDuplicateConfig
 */
[[nodiscard]] EnResponseCode CheckNetPortConflict(const SNetPortConfig& config, bool exists, int nodeId);

/** As CheckNetPortConflict, for a serial interface and its settings. */
[[nodiscard]] EnResponseCode CheckSerialPortConflict(const SSerialPortConfig& config, bool exists,
                                                     int nodeId);

/** The codes of a reply about a network port that failed. */
struct SNetFailureCodes {
    EnResponseCode atInit;  ///< it could not be opened
    EnResponseCode atSend;  ///< a command could not be sent
};

/** The codes of a mode; CodeBadRequest and CodeTcpSendFailed for an invalid mode. */
SNetFailureCodes NetFailureCodes(EnNetMode mode);

/**
 * Answers for a network port that could not be used, with the code of its mode.
 * @param atInit  true: it could not be opened; false: a command could not be sent
 */
int RespondNetPortFailure(HttpResponse* response, EnNetMode mode, bool atInit, SResponseData& content,
                          SRequestTrace& trace);

/**
 * Opens the network ports of these saved interfaces, side by side, so that it takes only as long as the
 * slowest of them, 3 s at most. A port that can't be opened keeps its report; the first command to it tries
 * again.
 */
void OpenNetPorts(const NetPortMap& ports);

/** As OpenNetPorts, for all saved interfaces. */
void ReopenNetPorts();

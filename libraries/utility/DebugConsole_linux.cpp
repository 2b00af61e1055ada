#include "platform/DebugConsole.h"
#include "platform/RavLog.h"

void SetDebugConsole(bool show) {
    RavLog::MirrorToStandardError(show);
}

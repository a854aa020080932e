#include "base/paths.h"

#include <array>

#ifndef TQS_ROOT
#error "TQS_ROOT is the root of all paths: \"/\" in the shipped program, \"\" in the test program"
#endif

#define TQS_DIR TQS_ROOT "usr/opt/tqs"
#define TQS_SILENT " > /dev/null 2>&1"

namespace paths {

const char* const kProductDir = TQS_DIR;
const char* const kSystemMap = TQS_DIR "/config/SystemMap.xml";
const char* const kLockFile = TQS_DIR "/config/SystemMap.lock";
const char* const kKfxConf = TQS_DIR "/config/kfx.conf";
const char* const kModels = TQS_DIR "/config/models";
const char* const kOsTypes = TQS_DIR "/config/ostypes";
const char* const kEventsDir = TQS_DIR "/events";
const char* const kLog = TQS_DIR "/logs/tqsmgr.log";
const char* const kOldLog = TQS_DIR "/logs/tqsmgr.log.old";
const char* const kStdInCopy = TQS_ROOT "tmp/tqsmgr.XXXXXX";
const char* const kConfigCopy = TQS_ROOT "tmp/tqsconfXXXXXX";
const char* const kNotifyWeb = TQS_DIR "/bin/notifyweb" TQS_SILENT;
const char* const kNotifyKfxd = TQS_ROOT "etc/init.d/kfxd update" TQS_SILENT;
const char* const kNotifyLrp = TQS_DIR "/bin/notifylrp" TQS_SILENT;

std::span<const char* const> ProductFiles() {
    static const std::array kFiles = {kSystemMap, kLockFile, kKfxConf, kModels,
                                      kOsTypes,   kLog,      kOldLog};
    return kFiles;
}

}  // namespace paths

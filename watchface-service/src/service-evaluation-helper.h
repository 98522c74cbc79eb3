// Lets other applications store and read back one duration for each watch face, over an open port of its own.
//
// Not working yet: the port is there, messages to it are not answered.

#pragma once

#include <string>

#include "bundle.h"
#include "common-util-ipc-control.h"

namespace WatchfaceService {

class EvaluationHelper {
public:
    EvaluationHelper();
    ~EvaluationHelper();
    EvaluationHelper(const EvaluationHelper&) = delete;
    EvaluationHelper& operator=(const EvaluationHelper&) = delete;

    void OnIPCMessageReceived(int localPortId, const std::string& remoteAppId, const std::string& remotePort,
                              bool trustedRemotePort, bundle* message);

private:
    CommonUtilIPCControl mIpcControl;
};

}  // namespace WatchfaceService

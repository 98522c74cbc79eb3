// Lets any application of the watch keep one text, a duration, for each watch face, and read it back.
//
// It has an open port of its own, apart from the messages of the watch's peers. Each request is sent back to
// where it came from, with the result added; what cannot be answered is only logged. A duration is kept as it
// came, as a preference under APPLICATION + "+" + WATCH FACE + "+evaluation-helper-data-duration", so that no
// application gets at those of another. How many the store takes is the platform's to say.

#pragma once

#include <string>

#include "bundle.h"
#include "common-util-ipc-control.h"
#include "handles.h"

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
    struct Request {
        const std::string& remoteAppId;
        const std::string& remotePort;
        const std::string key;  // of the preference
        bundle* message;
    };
    struct Operation {
        const char* name;
        void (EvaluationHelper::*handle)(const Request&);
    };
    static const Operation kOperations[];

    void SaveDuration(const Request& request);
    void LoadDuration(const Request& request);
    void Answer(const Request& request, BundlePtr reply);

    CommonUtilIPCControl mIpcControl;
};

}  // namespace WatchfaceService

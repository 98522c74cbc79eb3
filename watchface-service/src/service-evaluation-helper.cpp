#include "service-evaluation-helper.h"

#include <functional>

#include "service-log.h"

namespace WatchfaceService {

namespace {
constexpr char kEvaluationPort[] = "evaluation-helper-port";
}

using namespace std::placeholders;

EvaluationHelper::EvaluationHelper()
    : mIpcControl(kEvaluationPort, false,
                  std::bind(&EvaluationHelper::OnIPCMessageReceived, this, _1, _2, _3, _4, _5))
{
    LOG_INFO("");
}

EvaluationHelper::~EvaluationHelper()
{
    LOG_INFO("");
}

void EvaluationHelper::OnIPCMessageReceived(int, const std::string&, const std::string&, bool, bundle*) {}

}  // namespace WatchfaceService

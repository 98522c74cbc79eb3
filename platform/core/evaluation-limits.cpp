#include "evaluation-limits.h"

namespace Platform {

namespace {

std::string_view ApplicationOf(std::string_view key)
{
    return key.substr(0, key.find('+'));
}

void Add(EvaluationUse& use, std::string_view key, std::size_t valueBytes)
{
    ++use.entries;
    use.bytes += key.size() + valueBytes;
}

// What passes the limit, with it; empty when nothing does.
std::string Excess(const EvaluationUse& use, const EvaluationUse& most)
{
    if (use.entries > most.entries) return std::to_string(most.entries) + " entries";
    if (use.bytes > most.bytes) return std::to_string(most.bytes) + " bytes";
    return {};
}

}  // namespace

bool IsEvaluationKey(std::string_view key)
{
    return key.ends_with(kEvaluationKeyEnd);
}

EvaluationRoom::EvaluationRoom(std::string_view key, std::size_t valueBytes) : mKey(key)
{
    Add(mOfOne, key, valueBytes);
    Add(mOfAll, key, valueBytes);
}

void EvaluationRoom::Keeps(std::string_view key, std::size_t valueBytes)
{
    if (!IsEvaluationKey(key) || key == mKey) return;
    Add(mOfAll, key, valueBytes);
    if (ApplicationOf(key) == ApplicationOf(mKey)) Add(mOfOne, key, valueBytes);
}

std::string EvaluationRoom::Refusal() const
{
    const std::string who = "evaluation entry of [" + std::string(ApplicationOf(mKey)) + "] refused: ";
    if (const std::string excess = Excess(mOfOne, kMostEvaluationOfOne); !excess.empty())
        return who + "more than " + excess + " of one application";
    if (const std::string excess = Excess(mOfAll, kMostEvaluation); !excess.empty())
        return who + "more than " + excess + " in all";
    return {};
}

}  // namespace Platform

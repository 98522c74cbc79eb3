// Usage records, until somebody collects them: bounded in number, age and size.
//
// What is over a limit goes from the oldest on, whenever a record comes. The last records before a power cut
// may be lost, the file is whole all the same: a record is not worth a wait for the disk.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "database-sqlite.h"

namespace Platform {

struct SurveyRecord {
    int64_t id = 0;          // given by the store, ascending
    int64_t time = 0;        // milliseconds since 1970 UTC
    bool isFeature = false;  // a feature that was used, else a status
    std::string application, feature, value, extra;
};

struct SurveyLimits {
    int64_t mostRecords = 2000;
    int64_t longestAge = int64_t{90} * 24 * 60 * 60 * 1000;  // milliseconds before the newest record
    int mostPages = 512;                                     // of 4 KiB, in the file
    std::size_t longestText = 4096;                          // bytes; what is longer is cut
};

class SurveyStore {
public:
    explicit SurveyStore(std::string path, SurveyLimits limits = {});

    // 0, or SQLite's code. The record's id is not looked at.
    int Add(const SurveyRecord& record);
    // Those with a greater id, in the order in which they came.
    std::vector<SurveyRecord> List(int64_t after = 0);

private:
    int Insert(const SurveyRecord& record);
    int Drop(std::size_t statement, int64_t limit);

    const SurveyLimits mLimits;
    const std::string mSetUp;
    Database mDatabase;
};

// The records of an application, below the watch's root.
std::string SurveyPath(const std::string& appId);

}  // namespace Platform

// One fault each, planted into the document that has one of each element.

#pragma once

#include <span>
#include <string>

// Replaces the one place that reads `from`. The finding is on the line that then has `where`.
struct PlantedFault {
    const char* code;
    const char* from;
    const char* to;
    const char* where;
    bool isStructural;  // so that the RELAX NG schema sees it too
};

// In everything_result.xml. No two of them touch each other: any number may stand in one document.
std::span<const PlantedFault> PlantedFaults();

// The text with the fault.
std::string Plant(std::string text, const PlantedFault& fault);

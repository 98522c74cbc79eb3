// The texts of a document, a result XML or a flat one.

#pragma once

#include <map>
#include <string>

#include "face-node.h"

namespace DataUtil {

using Texts = std::map<std::string, std::map<std::string, std::string>>;  // language -> key -> text

// The texts of all languages. Languages and keys that are there twice are findings.
Texts ReadTexts(const Node& root, Findings& findings);

// A flat document keeps the texts of labels, which nothing in it uses.
enum class UnusedTexts { kReported, kKept };

// Every key used exists in the default language; translations have the same keys.
void CheckTexts(const Node& root, const Texts& texts, UnusedTexts unused, Findings& findings);

}  // namespace DataUtil

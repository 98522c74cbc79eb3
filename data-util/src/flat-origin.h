// Telling whether a flat document and a face document belong together.

#pragma once

#include <string_view>

#include "face-document.h"

namespace DataUtil {

// Whether the flat document is one that is made from this face document: with its selection as it is, with
// the complications replaced that need a paired phone, or with a world clock set in one of its slots. Pure;
// throws nothing but std::bad_alloc.
bool IsMadeFrom(std::string_view watchfaceXml, const FaceDocument& document);

}  // namespace DataUtil

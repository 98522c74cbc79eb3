// The fixture of the face documents' tests: a small document without any finding, into which a test plants
// one fault.

#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "face-document.h"

class AFaceDocument : public testing::Test {
protected:
    AFaceDocument();

    // Replaces the one place in the text that reads `from`.
    void Replace(std::string_view from, std::string_view to);
    // Adds to the one place that reads `there`.
    void AddBefore(std::string_view there, std::string_view more);
    void AddAfter(std::string_view there, std::string_view more);
    // The number of the one line that holds `text`.
    int LineOf(std::string_view text) const;

    virtual std::vector<DataUtil::Finding> Check() const;
    std::vector<std::string> Codes() const;
    // All findings, a line each.
    std::string Listed() const;
    // The flat document; the text must be free of errors.
    std::string Flat() const;

    // Exactly one finding, of this code, on the line that holds `where`, its message holding `says`.
    void ExpectOnly(std::string_view code, std::string_view where, std::string_view says = "") const;

    std::string mText;
};

// The same with a document that has one of each element; its selection picks, places and shows a picture.
class AFullFaceDocument : public AFaceDocument {
protected:
    AFullFaceDocument();

    // The selection becomes this, the start tag included.
    void Select(std::string_view selection);
    // The one line of the flat document that has `part`.
    std::string FlatLine(std::string_view part) const;
};

// The text of a file, which must exist.
std::string TextOf(const std::string& path);

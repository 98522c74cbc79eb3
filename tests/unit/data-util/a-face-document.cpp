#include "a-face-document.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace {

constexpr const char* kDocument = R"(<?xml version="1.0" encoding="UTF-8"?>
<face-result format="1" id="com.example.watchface-dawn" version="3" width="360" height="360" shape="round"
             default-language="en" preview-time="10:08:36" title-key="title">
  <strings language="en">
    <string key="title">Dawn</string>
    <string key="dial">Dial</string>
    <string key="dial.bars">Bars</string>
    <string key="dial.dots">Dots</string>
    <string key="tone">Tone</string>
    <string key="tone.red">Red</string>
    <string key="tone.blue">Blue</string>
    <string key="seconds">Seconds</string>
    <string key="top">Top field</string>
  </strings>
  <strings language="de">
    <string key="title">Morgen</string>
    <string key="dial">Zifferblatt</string>
    <string key="dial.bars">Striche</string>
    <string key="dial.dots">Punkte</string>
    <string key="tone">Farbe</string>
    <string key="tone.red">Rot</string>
    <string key="tone.blue">Blau</string>
    <string key="seconds">Sekunden</string>
    <string key="top">Oberes Feld</string>
  </strings>
  <options>
    <style id="dial" label-key="dial">
      <option id="bars" label-key="dial.bars" default="true"/>
      <option id="dots" label-key="dial.dots"/>
    </style>
    <palette id="tone" label-key="tone">
      <option id="red" label-key="tone.red" default="true">
        <color role="main" value="#FF0000"/>
      </option>
      <option id="blue" label-key="tone.blue">
        <color role="main" value="#0000FF"/>
      </option>
    </palette>
    <switch id="seconds" label-key="seconds" default="on" when="dial=bars"/>
  </options>
  <scene>
    <circle cx="180" cy="180" r="180">
      <radial-gradient cx="180" cy="180" r="180">
        <stop offset="0" color="main"/>
        <stop offset="1" color="#000000"/>
      </radial-gradient>
    </circle>
    <layer when="dial=bars">
      <ticks cx="180" cy="180" r="170" count="12" length="20" width="4" color="main"/>
    </layer>
    <ticks when="dial=dots" cx="180" cy="180" r="160" count="12" shape="dot" width="6" color="main"/>
    <text text-key="title" x="180" y="100" size="20" color="#FFFFFF"/>
    <text skeleton="Jmm" x="180" y="140" size="30" color="#FFFFFF"/>
    <slot name="top" group="data" label-key="top" role="gauge" x="150" y="40" width="60" height="60" color="main">
      <offer source="battery"/>
      <offer source="pedometer"/>
      <fallback source="battery"/>
      <fallback source="empty"/>
    </slot>
    <hand kind="second" when="seconds=on" cx="180" cy="180">
      <bar length="150" width="2" fill="main"/>
    </hand>
  </scene>
  <selection>
  </selection>
</face-result>
)";

}  // namespace

AFaceDocument::AFaceDocument() : mText(kDocument) {}

void AFaceDocument::Replace(std::string_view from, std::string_view to)
{
    const std::size_t at = mText.find(from);
    ASSERT_NE(at, std::string::npos) << "the document has no " << from;
    ASSERT_EQ(mText.find(from, at + 1), std::string::npos) << "the document has more than one " << from;
    mText.replace(at, from.size(), to);
}

void AFaceDocument::AddBefore(std::string_view there, std::string_view more)
{
    Replace(there, std::string(more).append(there));
}

void AFaceDocument::AddAfter(std::string_view there, std::string_view more)
{
    Replace(there, std::string(there).append(more));
}

int AFaceDocument::LineOf(std::string_view text) const
{
    const std::size_t at = mText.find(text);
    EXPECT_NE(at, std::string::npos) << "the document has no " << text;
    return 1 +
           static_cast<int>(std::count(mText.begin(), mText.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
}

std::vector<DataUtil::Finding> AFaceDocument::Check() const
{
    return DataUtil::ParseFace(mText).findings;
}

std::vector<std::string> AFaceDocument::Codes() const
{
    std::vector<std::string> codes;
    for (const DataUtil::Finding& finding : Check()) codes.push_back(finding.code);
    return codes;
}

std::string AFaceDocument::Listed() const
{
    std::string listed;
    for (const DataUtil::Finding& finding : Check()) listed += DataUtil::FormatFinding(finding) + "\n";
    return listed;
}

std::string AFaceDocument::Flat() const
{
    const DataUtil::ParseResult parsed = DataUtil::ParseFace(mText);
    if (parsed.document) return DataUtil::Flatten(*parsed.document);
    for (const DataUtil::Finding& finding : parsed.findings)
        ADD_FAILURE() << DataUtil::FormatFinding(finding);
    return "";
}

void AFaceDocument::ExpectOnly(std::string_view code, std::string_view where, std::string_view says) const
{
    const auto findings = Check();
    const std::string listed = Listed();
    ASSERT_EQ(findings.size(), 1U) << listed;
    EXPECT_EQ(findings[0].code, code) << listed;
    EXPECT_EQ(findings[0].line, LineOf(where)) << listed;
    EXPECT_THAT(findings[0].message, testing::HasSubstr(std::string(says)));
}

AFullFaceDocument::AFullFaceDocument()
{
    mText = TextOf(DOCUMENTS "/everything_result.xml");
}

void AFullFaceDocument::Select(std::string_view selection)
{
    const std::size_t begin = mText.find("<selection");
    std::size_t end = mText.find('>', begin) + 1;
    constexpr std::string_view closing = "</selection>";
    if (mText[end - 2] != '/') end = mText.find(closing, end) + closing.size();
    mText.replace(begin, end - begin, selection);
}

std::string AFullFaceDocument::FlatLine(std::string_view part) const
{
    const std::string flat = Flat();
    const std::size_t at = flat.find(part);
    EXPECT_NE(at, std::string::npos) << "the flat document has no " << part;
    EXPECT_EQ(flat.find(part, at + 1), std::string::npos) << "the flat document has more than one " << part;
    if (at == std::string::npos) return "";
    const std::size_t begin = flat.find_first_not_of(' ', flat.rfind('\n', at) + 1);
    return flat.substr(begin, flat.find('\n', at) - begin);
}

std::string TextOf(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in) << path;
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Bundles and launch data of any values, of right and wrong types, up to more than is allowed, as a peer lays
// them out. The rules say by the values alone what is read.

#include <fuzzer/FuzzedDataProvider.h>

#include <string>
#include <vector>

#include "bundle-oracle.h"

namespace {

using Fuzz::Strings;
using TestSupport::Body;

constexpr std::size_t kMostEntries = 12, kMostElements = 8, kMostOfAText = 64;
// Now and then a text or an array is there over and over: to come near the limits, and beyond them.
constexpr std::size_t kTimes[] = {100, 4096, 65'536, 150'000};
// What goes far beyond them costs seconds of copying in the sanitizer's allocator.
constexpr std::size_t kMostBytes = std::size_t{16} << 20;
constexpr uint8_t kRarely = 250;  // of 255

// The types a value may have on the wire; what is not text is a number.
constexpr const char* kTypes[] = {"s", "as", "ay", "aay", "s", "as", "ay", "aay", "u", "g", "au", "ag"};

struct Entry {
    std::string key;
    std::string type;
    Strings texts;  // one, or the elements

    bool IsArray() const { return type == "as" || type == "aay"; }
    bool IsBytes() const { return type.back() == 'y'; }
    bool IsText() const { return type.back() == 's' || IsBytes(); }
    std::size_t Bytes() const
    {
        std::size_t bytes = 0;
        for (const std::string& text : texts) bytes += text.size();
        return bytes;
    }
};

bool HasNul(const Strings& texts)
{
    for (const std::string& text : texts) {
        if (text.find('\0') != std::string::npos) return true;
    }
    return false;
}

// What an `s` may hold, from any bytes.
std::string AsText(std::string text)
{
    if (Fuzz::IsText(text)) return text;
    for (char& c : text) c = static_cast<char>('A' + (c & 0x1F));
    return text;
}

std::size_t Times(FuzzedDataProvider& input)
{
    return input.ConsumeIntegral<uint8_t>() < kRarely ? 1 : input.PickValueInArray(kTimes);
}

std::string AnyText(FuzzedDataProvider& input)
{
    const std::string once = input.ConsumeRandomLengthString(kMostOfAText);
    const std::size_t times = Times(input);
    std::string text;
    text.reserve(once.size() * times);
    for (std::size_t i = 0; i < times; ++i) text += once;
    return text;
}

Entry AnyEntry(FuzzedDataProvider& input)
{
    Entry entry{AsText(input.ConsumeRandomLengthString(kMostOfAText)), input.PickValueInArray(kTypes), {}};
    if (!entry.IsArray()) {
        entry.texts = {AnyText(input)};
    } else {
        const std::size_t count = input.ConsumeIntegralInRange<std::size_t>(0, kMostElements);
        for (std::size_t i = 0; i < count; ++i)
            entry.texts.push_back(input.ConsumeRandomLengthString(kMostOfAText));
        const Strings once = entry.texts;
        for (std::size_t times = Times(input); times > 1 && entry.texts.size() < 70'000; --times)
            entry.texts.insert(entry.texts.end(), once.begin(), once.end());
    }
    if (!entry.IsBytes()) {
        for (std::string& text : entry.texts) text = AsText(std::move(text));
    }
    return entry;
}

void LayOut(const Entry& entry, Body* body)
{
    body->Align(8);
    body->Text(entry.key);
    body->Signature(entry.type);
    if (entry.type == "g") return body->Signature("s");
    if (!entry.IsText()) return body->Word(0);  // a number, or an array without elements
    Body elements;
    Body* to = entry.IsArray() ? &elements : body;
    for (const std::string& text : entry.texts) entry.IsBytes() ? to->Bytes(text) : to->Text(text);
    if (entry.IsArray()) body->Bytes(elements.Layout());
}

Fuzz::Reading ByTheRules(const std::vector<Entry>& entries)
{
    Fuzz::Values values;
    bool bytes = false;
    for (const Entry& entry : entries) {
        bytes = bytes || entry.IsBytes();
        if (!entry.IsText() || HasNul(entry.texts) || values.contains(entry.key)) return {};
        if (entry.IsArray())
            values[entry.key] = entry.texts;
        else
            values[entry.key] = entry.texts.front();
    }
    if (Fuzz::IsTooMuch(values)) return {};
    Fuzz::Reading reading{values, {}};
    if (!bytes) reading.launchData = values;
    return reading;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    std::vector<Entry> entries;
    for (std::size_t bytes = 0;
         input.remaining_bytes() > 0 && entries.size() < kMostEntries && bytes < kMostBytes;) {
        entries.push_back(AnyEntry(input));
        bytes += entries.back().Bytes();
    }
    Body body;
    body.Array([&] {
        for (const Entry& entry : entries) LayOut(entry, &body);
    });
    Fuzz::CheckReading(body, ByTheRules(entries));
    return 0;
}

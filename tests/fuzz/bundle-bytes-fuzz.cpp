// Any bytes as the `a{sv}` of a message or of a launch request: lengths that lie, padding that is none, texts
// that are no text. A second reader, of these bytes alone, says what they amount to.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "bundle-oracle.h"

namespace {

using Fuzz::Strings;

constexpr std::size_t kMostBytes = std::size_t{1} << 16;

// Reads the bus's own layout, little-endian. Once something is wrong it stays so.
class Reader {
public:
    explicit Reader(std::string_view bytes) : mBytes(bytes) {}

    Fuzz::Reading Read()
    {
        const std::size_t end = ArrayEnd(8);
        while (mIsRight && mAt < end) ReadEntry();
        if (!mIsRight || mAt != end || Fuzz::IsTooMuch(mValues)) return {};
        Fuzz::Reading reading{mValues, {}};
        if (!mHasBytes) reading.launchData = mValues;
        return reading;
    }

private:
    void ReadEntry()
    {
        Align(8);
        const std::string key = Text();
        const std::string type(Take(Byte()));
        Require(Byte() == 0 && !mValues.contains(key));
        mHasBytes = mHasBytes || type == "ay" || type == "aay";
        if (type == "s")
            mValues[key] = Text();
        else if (type == "ay")
            mValues[key] = Bytes();
        else if (type == "as")
            mValues[key] = Elements(&Reader::Text);
        else if (type == "aay")
            mValues[key] = Elements(&Reader::Bytes);
        else
            mIsRight = false;
    }

    Strings Elements(std::string (Reader::*next)())
    {
        Strings elements;
        const std::size_t end = ArrayEnd(4);
        while (mIsRight && mAt < end) elements.push_back((this->*next)());
        Require(mAt == end);
        return elements;
    }

    // Of an array that begins here; then the place of its first element.
    std::size_t ArrayEnd(std::size_t alignment)
    {
        const std::size_t length = Word();
        Align(alignment);
        Require(length <= mBytes.size() - mAt);
        return mAt + length;
    }

    std::string Text()
    {
        std::string text = Bytes();
        Require(Byte() == 0 && Fuzz::IsText(text));
        return text;
    }

    std::string Bytes()
    {
        std::string bytes(Take(Word()));
        Require(bytes.find('\0') == std::string::npos);
        return bytes;
    }

    uint32_t Word()
    {
        Align(4);
        uint32_t word = 0;
        const std::string_view bytes = Take(sizeof word);
        if (mIsRight) std::memcpy(&word, bytes.data(), sizeof word);
        return word;
    }

    uint8_t Byte()
    {
        const std::string_view byte = Take(1);
        return mIsRight ? static_cast<uint8_t>(byte.front()) : 0;
    }

    void Align(std::size_t to)
    {
        while (mIsRight && mAt % to != 0) Require(Byte() == 0);
    }

    // What is asked may itself have found something wrong.
    void Require(bool holds) { mIsRight = mIsRight && holds; }

    std::string_view Take(std::size_t size)
    {
        Require(size <= mBytes.size() - mAt);
        if (!mIsRight) return {};
        mAt += size;
        return mBytes.substr(mAt - size, size);
    }

    std::string_view mBytes;
    std::size_t mAt = 0;
    bool mIsRight = true, mHasBytes = false;
    Fuzz::Values mValues;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    if (size > kMostBytes) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    TestSupport::Body body;
    body.Raw(bytes);
    Fuzz::CheckReading(body, Reader(bytes).Read());
    return 0;
}

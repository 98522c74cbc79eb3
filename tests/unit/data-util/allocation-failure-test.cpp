// Memory that runs out, at any point of a conversion. This file replaces operator new for all of the tests.

#include <cstdlib>
#include <memory>
#include <new>

#include "a-face-document.h"
#include "data-util.h"
#include "log-capture.h"

namespace {

// The allocation that fails, counted down; -1 for none.
long gFailing = -1;

bool Fails()
{
    return gFailing >= 0 && gFailing-- == 0;
}

}  // namespace

// Not inlined, or compilers see a malloc where they expect a new.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Fails() ? nullptr : std::malloc(size == 0 ? 1 : size);
}

[[gnu::noinline]] void* operator new(std::size_t size)
{
    void* memory = operator new(size, std::nothrow);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept
{
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

TEST_F(AFaceDocument, gives_null_and_one_line_when_memory_runs_out_anywhere)
{
    constexpr long kStep = 23;
    bool succeeded = false;
    for (long failing = 0; !succeeded; failing += kStep) {
        LogCapture::Clear();
        gFailing = failing;
        char* flat = data_util_resultxml_memory_converter(mText.c_str());
        succeeded = gFailing >= 0;
        gFailing = -1;
        ASSERT_EQ(flat != nullptr, succeeded) << failing;
        ASSERT_EQ(LogCapture::Lines().size(), succeeded ? 0U : 1U) << failing;
        std::free(flat);
        ASSERT_LT(failing, 1000000);
    }
}

namespace {

// Each gives whether the call had a result.
bool Combination(const char* path)
{
    char* text = data_util_log_result_xml_serialize(path);
    std::free(text);
    return text != nullptr;
}

bool Items(const char* path)
{
    data_util_log_item_s* item = data_util_log_item_get_from_result_xml_file(path);
    data_util_log_item_free(item);
    return item != nullptr;
}

bool WithoutLimited(const char* path)
{
    char* text = data_util_resultxml_converter_remove_limited_complication(path, nullptr);
    std::free(text);
    return text != nullptr;
}

bool WithWorldClock(const char* path)
{
    char* text = data_util_resultxml_file_converter_update_worldclock(
        path, {"place", "PET", "America/Lima", "Lima", "Peru"});
    std::free(text);
    return text != nullptr;
}

bool HasLimited(const char* path)
{
    return data_util_resultxml_has_limited_complication_xml_file(path, nullptr) != 0;
}

}  // namespace

TEST(TheDataLibrary, gives_nothing_and_one_line_when_memory_runs_out_anywhere)
{
    for (bool (*call)(const char*) : {Combination, Items, WithoutLimited, WithWorldClock, HasLimited}) {
        bool succeeded = false;
        for (long failing = 0; !succeeded; failing += 71) {
            LogCapture::Clear();
            gFailing = failing;
            const bool result = call(DOCUMENTS "/everything_result.xml");
            succeeded = gFailing >= 0;
            gFailing = -1;
            ASSERT_EQ(result, succeeded) << failing;
            ASSERT_EQ(LogCapture::Lines().size(), succeeded ? 0U : 1U) << failing;
            ASSERT_LT(failing, 1000000);
        }
    }
}

#include "contract-test.h"

namespace Contract {
namespace {

class ABundle : public ContractTest {
protected:
    std::string Text(const char* key)
    {
        char* value = nullptr;
        bundle_get_str(b.get(), key, &value);
        return value ? value : "(null)";
    }

    Strings Array(const char* key)
    {
        int count = 0;
        const char** values = bundle_get_str_array(b.get(), key, &count);
        return Strings(values, values + count);
    }

    int AddArray(const char* key, std::vector<const char*> values)
    {
        return bundle_add_str_array(b.get(), key, values.data(), static_cast<int>(values.size()));
    }

    BundlePtr b{bundle_create()};
};

TEST_F(ABundle, keeps_strings)
{
    EXPECT_EQ(bundle_add_str(b.get(), "type", "watch-idle-changed"), BUNDLE_ERROR_NONE);
    EXPECT_EQ(bundle_add_str(b.get(), "empty", ""), BUNDLE_ERROR_NONE);
    EXPECT_EQ(Text("type"), "watch-idle-changed");
    EXPECT_EQ(Text("empty"), "");
    EXPECT_EQ(bundle_get_type(b.get(), "type"), 0x401);
    EXPECT_EQ(bundle_get_count(b.get()), 2);
}

TEST_F(ABundle, keeps_arrays_in_order)
{
    EXPECT_EQ(AddArray("bg_list", {"b.png", "a.png", "b.png"}), BUNDLE_ERROR_NONE);
    EXPECT_THAT(Array("bg_list"), testing::ElementsAre("b.png", "a.png", "b.png"));
    EXPECT_EQ(bundle_get_type(b.get(), "bg_list"), 0x501);
}

TEST_F(ABundle, keeps_an_array_of_nothing)
{
    EXPECT_EQ(AddArray("bg_list", {}), BUNDLE_ERROR_NONE);
    EXPECT_THAT(Array("bg_list"), testing::IsEmpty());
    EXPECT_EQ(bundle_get_type(b.get(), "bg_list"), 0x501);
}

TEST_F(ABundle, copies_what_is_added)
{
    std::string key = "key";
    std::string value = "value";
    bundle_add_str(b.get(), key.c_str(), value.c_str());
    key[0] = value[0] = 'X';
    EXPECT_EQ(Text("key"), "value");
}

TEST_F(ABundle, replaces_a_value_that_is_added_again)
{
    bundle_add_str(b.get(), "status", "fail");
    EXPECT_EQ(bundle_add_str(b.get(), "status", "success"), BUNDLE_ERROR_NONE);
    EXPECT_EQ(Text("status"), "success");
    EXPECT_EQ(bundle_get_count(b.get()), 1);
}

TEST_F(ABundle, replaces_a_string_by_an_array_and_back)
{
    bundle_add_str(b.get(), "bg_list", "a.png");
    EXPECT_EQ(AddArray("bg_list", {"b.png"}), BUNDLE_ERROR_NONE);
    EXPECT_EQ(bundle_get_type(b.get(), "bg_list"), BUNDLE_TYPE_STR_ARRAY);
    EXPECT_THAT(Array("bg_list"), testing::ElementsAre("b.png"));
    EXPECT_EQ(bundle_add_str(b.get(), "bg_list", "c.png"), BUNDLE_ERROR_NONE);
    EXPECT_EQ(bundle_get_type(b.get(), "bg_list"), BUNDLE_TYPE_STR);
    EXPECT_EQ(bundle_get_count(b.get()), 1);
}

TEST_F(ABundle, reads_a_missing_key_as_nothing)
{
    char* value = b ? const_cast<char*>("before") : nullptr;
    EXPECT_NE(bundle_get_str(b.get(), "missing", &value), BUNDLE_ERROR_NONE);
    EXPECT_EQ(value, nullptr);
    int count = 7;
    EXPECT_EQ(bundle_get_str_array(b.get(), "missing", &count), nullptr);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(bundle_get_type(b.get(), "missing"), BUNDLE_TYPE_NONE);
}

TEST_F(ABundle, reads_a_value_of_the_other_type_as_nothing)
{
    bundle_add_str(b.get(), "text", "a");
    AddArray("array", {"a"});
    char* value = const_cast<char*>("before");
    EXPECT_NE(bundle_get_str(b.get(), "array", &value), BUNDLE_ERROR_NONE);
    EXPECT_EQ(value, nullptr);
    int count = 7;
    EXPECT_EQ(bundle_get_str_array(b.get(), "text", &count), nullptr);
    EXPECT_EQ(count, 0);
}

TEST_F(ABundle, loses_a_key_that_is_deleted)
{
    bundle_add_str(b.get(), "data/xml_data", "<a/>");
    EXPECT_EQ(bundle_del(b.get(), "data/xml_data"), BUNDLE_ERROR_NONE);
    EXPECT_EQ(bundle_get_count(b.get()), 0);
    EXPECT_NE(bundle_del(b.get(), "data/xml_data"), BUNDLE_ERROR_NONE);
}

TEST_F(ABundle, is_copied_whole)
{
    bundle_add_str(b.get(), "type", "watch-bg-del");
    AddArray("bg_list", {"a.png", "b.png"});
    const BundlePtr copy(bundle_dup(b.get()));
    const Message before = ContentOf(b.get());
    EXPECT_EQ(ContentOf(copy.get()), before);
    bundle_add_str(copy.get(), "type", "other");
    bundle_del(copy.get(), "bg_list");
    EXPECT_EQ(ContentOf(b.get()), before);
}

TEST_F(ABundle, refuses_null)
{
    EXPECT_NE(bundle_add_str(nullptr, "key", "value"), BUNDLE_ERROR_NONE);
    EXPECT_NE(bundle_add_str(b.get(), nullptr, "value"), BUNDLE_ERROR_NONE);
    EXPECT_NE(bundle_add_str(b.get(), "key", nullptr), BUNDLE_ERROR_NONE);
    EXPECT_EQ(bundle_dup(nullptr), nullptr);
    EXPECT_NE(bundle_free(nullptr), BUNDLE_ERROR_NONE);
    EXPECT_EQ(bundle_get_count(b.get()), 0);
}

}  // namespace
}  // namespace Contract

// Platform keys: key get, set, unset, list, watch.

#include "arguments.h"
#include "hint.h"
#include "service-words.h"
#include "stored-values.h"
#include "verb-table.h"

namespace Wfctl {

namespace {

ValueKind PlatformKeys()
{
    const Names known = KeyNames();
    return {
        "key", "key list", {known.begin(), known.end()}
    };
}

Exit Get(const Options& options, const ValueArguments& arguments)
{
    KeyStore store(options);
    PrintValue(options, Required(store.Values(), PlatformKeys(), arguments.key));
    return Exit::kDone;
}

Exit Set(const Options& options, const ValueArguments& arguments)
{
    KeyStore store(options);
    const auto present = store.Values().Get(arguments.key);
    const Platform::StoredValue value = ParseValue(arguments.value, arguments.type, present);
    WarnOfNewName(store.Values(), PlatformKeys(), arguments.key);
    store.Set(arguments.key, value);
    PrintWritten(options, {
                              {arguments.key, value}
    });
    return Exit::kDone;
}

Exit Unset(const Options& options, const ValueArguments& arguments)
{
    KeyStore store(options);
    const std::vector<std::string> keys = Once(arguments.keys);
    for (const std::string& key : keys) Required(store.Values(), PlatformKeys(), key);
    store.Unset(keys);
    PrintUnset(options, keys);
    return Exit::kDone;
}

Exit List(const Options& options)
{
    KeyStore store(options);
    PrintValues(options, store.Values().List());
    return Exit::kDone;
}

Exit Watch(const Options& options, const ValueArguments& arguments)
{
    KeyStore store(options);
    std::vector<Watched> watched;
    const ValueKind kind = PlatformKeys();
    for (const std::string& key : arguments.keys) {
        WarnOfNewName(store.Values(), kind, key);
        watched.push_back({key, key, [&store, key] { return store.Values().Get(key); }});
    }
    return WatchAll(options, arguments, store.Bus(), watched);
}

}  // namespace

Action DefineKeyGet(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddKey(parser, arguments, "KEY");
    return Runs(arguments, Get);
}

Action DefineKeySet(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddKey(parser, arguments, "KEY");
    AddValue(parser, arguments);
    return Runs(arguments, Set);
}

Action DefineKeyUnset(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddKeys(parser, arguments);
    return Runs(arguments, Unset);
}

Action DefineKeyList(CLI::App&)
{
    return List;
}

Action DefineKeyWatch(CLI::App& parser)
{
    const auto arguments = std::make_shared<ValueArguments>();
    AddKeys(parser, arguments);
    AddEnd(parser, arguments);
    return Runs(arguments, Watch);
}

}  // namespace Wfctl

// generate-system-files NAME=VALUE…: writes what a system must know about the applications of a watch, all of
// it from their one table: activation files, units, the bus policy, users and folders.
//
// Names: out (a folder that stands for the prefix), datadir (below it), templates (of units), libexec,
// modules (absolute, as installed), media (folders with ":" between them that a device's programs may read).

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>

#include "area-writers.h"
#include "bus-names.h"

namespace {

namespace fs = std::filesystem;
using Platform::Application;
using Platform::Areas;
using Platform::AreaWriter;
using Platform::kApplications;
using Platform::kAreaWriters;

using Values = std::map<std::string, std::string>;
using std::string;

// Whose members alone get to the device's root.
const string kGroup(Platform::kDeviceGroup);

const Areas& DeviceAreas()
{
    static const Areas areas{string(Platform::kDeviceRoot), ""};
    return areas;
}

string WithoutSlash(string folder)
{
    while (folder.ends_with("/")) folder.pop_back();
    return folder;
}

string UserOf(std::string_view appId)
{
    return string(Platform::FindApplication(appId)->user);
}

// The first application of the table that writes an area: its user owns the folder.
const AreaWriter& OwnerOf(const AreaWriter& writer)
{
    for (const AreaWriter& other : kAreaWriters) {
        if (other.area == writer.area && other.of == writer.of) return other;
    }
    return writer;
}

bool IsShared(const AreaWriter& writer)
{
    for (const AreaWriter& other : kAreaWriters) {
        if (&OwnerOf(other) == &OwnerOf(writer) && &other != &OwnerOf(writer)) return true;
    }
    return false;
}

string ReadFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    if (!file) throw std::runtime_error("cannot read " + path.string());
    return text.str();
}

void WriteFile(const fs::path& path, const string& text)
{
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

// The template's text with the values for its @NAME@s.
string Filled(string text, const Values& values)
{
    for (const auto& [name, value] : values) {
        const string mark = "@" + name + "@";
        for (auto at = text.find(mark); at != string::npos; at = text.find(mark, at + value.size())) {
            text.replace(at, mark.size(), value);
        }
    }
    return text;
}

// --- Activation and units ----------------------------------------------------------------------------------

string ActivationFile(const Application& app, const string& libexec, bool onDevice)
{
    const string program(app.program);
    string text = "[D-BUS Service]\nName=" + string(app.id) + "\nExec=" + libexec + "/" + program + "\n";
    if (onDevice) text += "User=" + string(app.user) + "\n";
    return text + "SystemdService=" + program + ".service\n";
}

string Unit(const Application& app, const Values& given, const string& file)
{
    string writable;
    for (const string& folder : Platform::WritableFolders(DeviceAreas(), string(app.id))) {
        writable += (writable.empty() ? "" : " ") + WithoutSlash(folder);
    }
    const string own = WithoutSlash(DeviceAreas().PrivateOf(string(app.id)));
    const bool startsWithTheSystem = app.id == Platform::kServiceId;
    return Filled(ReadFile(given.at("templates") + "/" + file),
                  {
                      {"ID",       string(app.id)                                                        },
                      {"PROGRAM",  string(app.program)                                                   },
                      {"USER",     string(app.user)                                                      },
                      {"ROOT",     DeviceAreas().root                                                    },
                      {"STATE",    fs::path(own).lexically_relative("/var/lib")                          },
                      {"WRITABLE", writable                                                              },
                      {"MEDIA",    given.at("media")                                                     },
                      {"LIBEXEC",  given.at("libexec")                                                   },
                      {"MODULES",  given.at("modules")                                                   },
                      {"INSTALL",  startsWithTheSystem ? "\n[Install]\nWantedBy=multi-user.target\n" : ""},
    });
}

string Preset()
{
    string text;
    for (const Application& app : kApplications) {
        if (app.id == Platform::kServiceId) text += "enable " + string(app.program) + ".service\n";
    }
    return text;
}

// --- Who may do what on the bus ----------------------------------------------------------------------------

// Speaking to an application: messages, launch requests, and asking whether it is alive.
string SpeakingTo(const Application& app)
{
    const string to = "    <allow send_destination=\"" + string(app.id) + "\" send_interface=\"";
    return to + Platform::kPortInterface + "\"/>\n" + to + Platform::kApplicationInterface +
           "\" send_member=\"Launch\"/>\n" + to + "org.freedesktop.DBus.Peer\"/>\n";
}

string GroupPolicy()
{
    string text = "  <policy group=\"" + kGroup + "\">\n    <allow send_type=\"signal\" send_interface=\"" +
                  Platform::kKeysInterface + "\"/>\n";
    for (const Application& app : kApplications) {
        if (app.client.empty()) text += SpeakingTo(app);
    }
    return text + "  </policy>\n";
}

string UserPolicies()
{
    string text;
    for (const Application& app : kApplications) {
        text += "  <policy user=\"" + string(app.user) + "\">\n    <allow own_prefix=\"" + string(app.id) +
                "\"/>\n";
        for (const Application& other : kApplications) {
            if (other.client == app.id) text += SpeakingTo(other);
        }
        text += "  </policy>\n";
    }
    return text;
}

// The administrator may be any application, and speak to each.
string RootPolicy()
{
    string text = "  <policy user=\"root\">\n    <allow own_prefix=\"" +
                  string(Platform::kApplicationNamespace) + "\"/>\n" +
                  "    <allow send_type=\"signal\" send_interface=\"" + Platform::kKeysInterface + "\"/>\n";
    for (const Application& app : kApplications)
        text += "    <allow send_destination=\"" + string(app.id) + "\"/>\n";
    return text + "  </policy>\n";
}

string Policy()
{
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<!-- Which user may be which application of the watch, and who may speak to whom. -->
<busconfig>
  <!-- Who does not read gets no more: the bus stops hearing a sender whose messages it keeps too many of. -->
  <limit name="max_outgoing_bytes">)" +
           std::to_string(Platform::kMostUnreadBytes) + R"(</limit>
  <policy context="default">
    <deny own_prefix=")" +
           string(Platform::kApplicationNamespace) + R"("/>
    <deny send_type="signal" send_interface=")" +
           Platform::kKeysInterface + R"("/>
  </policy>
)" + GroupPolicy() +
           UserPolicies() + RootPolicy() + "</busconfig>\n";
}

// --- Users and folders -------------------------------------------------------------------------------------

string Users()
{
    string text = "g " + kGroup + " -\n";
    std::set<string> told;
    for (const Application& app : kApplications) {
        const string user(app.user);
        if (!told.insert(user).second) continue;
        text +=
            "u " + user + " - \"Watch application " + string(app.id) + "\"\nm " + user + " " + kGroup + "\n";
    }
    for (const AreaWriter& writer : kAreaWriters) {
        const AreaWriter& owner = OwnerOf(writer);
        if (&owner != &writer)
            text += "m " + UserOf(writer.application) + " " + UserOf(owner.application) + "\n";
    }
    return text;
}

string FolderLine(const string& path, const string& mode, const string& user, const string& group)
{
    return "d " + WithoutSlash(path) + " " + mode + " " + user + " " + group + "\n";
}

bool IsWrittenByOthers(const Application& app)
{
    for (const AreaWriter& writer : kAreaWriters) {
        if (writer.of == app.id) return true;
    }
    return false;
}

// An application's folder and its areas.
string ApplicationFolders(const Application& app)
{
    const Areas& areas = DeviceAreas();
    const string id(app.id), user(app.user), folder = areas.PrivateOf(id);
    // Below a folder of one user no other may own one; and this user must not move those away.
    if (IsWrittenByOthers(app)) {
        return FolderLine(folder, "1775", "root", user) +
               FolderLine(folder + "shared", "0755", "root", "root");
    }
    string text;
    for (const string& own : {folder, folder + "shared", areas.DataOf(id), areas.TrustedOf(id)}) {
        text += FolderLine(own, "0755", user, user);
    }
    return text;
}

// The areas that others than their application write.
string WrittenAreas()
{
    string text;
    for (const AreaWriter& writer : kAreaWriters) {
        if (&OwnerOf(writer) != &writer) continue;
        const string area = (DeviceAreas().*writer.area)(string(writer.of)),
                     user = UserOf(writer.application);
        text += FolderLine(area, IsShared(writer) ? "2775" : "0755", user, user);
    }
    return text;
}

string Folders()
{
    const Areas& areas = DeviceAreas();
    string text = FolderLine(areas.root, "0750", "root", kGroup);
    text += FolderLine(areas.Common(), "2770", "root", kGroup);
    text += "L " + areas.root + "/keys.db - - - - common/keys.db\n";
    text += FolderLine(areas.root + "/apps", "0755", "root", "root");
    for (const Application& app : kApplications) text += ApplicationFolders(app);
    return text + WrittenAreas();
}

void WriteAll(const Values& given)
{
    const string note = "# Made from the table of applications.\n";
    const fs::path out = given.at("out");
    const fs::path share = out / given.at("datadir"), lib = out / "lib";
    for (const Application& app : kApplications) {
        if (app.program.empty()) continue;
        const string activation = string(app.id) + ".service", unit = string(app.program) + ".service";
        WriteFile(share / "dbus-1/services" / activation, ActivationFile(app, given.at("libexec"), false));
        WriteFile(share / "dbus-1/system-services" / activation,
                  ActivationFile(app, given.at("libexec"), true));
        WriteFile(lib / "systemd/system" / unit, Unit(app, given, "system.service.in"));
        WriteFile(lib / "systemd/user" / unit, Unit(app, given, "user.service.in"));
    }
    WriteFile(share / "dbus-1/system.d" / (string(Platform::kServiceId) + ".conf"), Policy());
    WriteFile(lib / "systemd/system-preset/50-watch.preset", note + Preset());
    WriteFile(lib / "sysusers.d/watch.conf", note + Users());
    WriteFile(lib / "tmpfiles.d/watch.conf", note + Folders());
}

}  // namespace

int main(int argc, char** argv)
{
    Values given;
    for (int i = 1; i < argc; ++i) {
        const string argument = argv[i];
        const auto equals = argument.find('=');
        if (equals != string::npos) given[argument.substr(0, equals)] = argument.substr(equals + 1);
    }
    try {
        WriteAll(given);
    } catch (const std::out_of_range&) {
        std::cerr << "usage: generate-system-files out= datadir= templates= libexec= "
                     "modules= media=\n";
        return EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::cerr << "generate-system-files: " << error.what() << "\n";
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

// A private watch for one test, in a folder whose name is long and awkward.

#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "running.h"

inline constexpr char kService[] = "com.corvane.watchface-service";
inline constexpr char kManager[] = "com.corvane.w-manager-service";
inline constexpr char kEditor[] = "com.corvane.watchface-editor";
inline constexpr char kClassic[] = "com.corvane.watchface-mirel-c1";
inline constexpr char kDigital[] = "com.corvane.watchface-mirel-e1";

// Runs wfctl without a watch in its environment.
Result Wfctl(const Arguments& arguments);

// A folder for one test.
class AFolder : public testing::Test {
public:
    const std::string& Path() const { return mFolder; }
    // The path of a new file.
    std::string Holding(const std::string& name, const std::string& bytes) const;

protected:
    AFolder();
    ~AFolder() override;

    std::string mFolder;
};

// A PNG of one colour, in the folder.
std::string BlankPicture(const AFolder& folder);

// The faces of the build tree, and the result XML of one.
std::vector<std::string> StagedFaces();
std::string StagedResultXml(const std::string& name);

class AWatch : public AFolder {
public:
    // With the watch in the environment, as after sourcing its watch.env.
    Result Run(const Arguments& arguments) const;

protected:
    AWatch();
    ~AWatch() override;

    std::unique_ptr<Program> Start(const Arguments& arguments) const;
    // `listen`, once it is up.
    std::unique_ptr<Program> Listen(Arguments arguments) const;

    // What DIR/watch.state says under a name.
    std::string State(const std::string& name) const;

    std::string ReadOnlyFace(const std::string& name) const;
    std::string ReadWriteFace(const std::string& name) const;

    std::string mRoot;
    Result mUp;
    Environment mEnvironment;
};

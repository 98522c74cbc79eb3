#include "file-replacement-posix.h"
#include "files.h"

class FileOutputStream::Impl {
public:
    explicit Impl(const std::string& path)
        : mReplacement(Platform::FileReplacement::Begin(path, "writing")), mGood(mReplacement.has_value())
    {
    }

    void Write(std::string_view bytes)
    {
        if (mReplacement && mGood) mGood = mReplacement->Write(bytes);
    }

    void Close()
    {
        if (mReplacement && mGood) mGood = mReplacement->Commit();
        mReplacement.reset();
    }

    bool Good() const { return mGood; }

private:
    std::optional<Platform::FileReplacement> mReplacement;
    bool mGood;
};

FileOutputStream::FileOutputStream(const std::string& path) : mImpl(std::make_unique<Impl>(path)) {}
FileOutputStream::~FileOutputStream()
{
    mImpl->Close();
}
void FileOutputStream::Write(std::string_view bytes)
{
    mImpl->Write(bytes);
}
void FileOutputStream::Close()
{
    mImpl->Close();
}
bool FileOutputStream::Good() const
{
    return mImpl->Good();
}

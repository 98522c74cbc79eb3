// A bar on stderr while something takes long; only on a terminal.

#pragma once

#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>

namespace Wfctl {

class Progress {
public:
    // `what` is shown in front of the bar. Without `wanted` nothing ever is.
    Progress(std::string what, std::size_t total, bool wanted = true)
        : mWhat(std::move(what)), mTotal(total), mShows(wanted && total > 1 && isatty(STDERR_FILENO))
    {
    }
    ~Progress() { Clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Makes room for other text.
    void Clear() const
    {
        if (mShows) std::fputs("\r\033[K", stderr);
    }

    void Show(std::size_t done) const
    {
        constexpr std::size_t kWidth = 24;
        if (!mShows) return;
        std::string bar(kWidth * done / mTotal, '#');
        bar.resize(kWidth, '.');
        std::fprintf(stderr, "\r\033[K%s [%s] %zu of %zu", mWhat.c_str(), bar.c_str(), done, mTotal);
        std::fflush(stderr);
    }

private:
    const std::string mWhat;
    const std::size_t mTotal;
    const bool mShows;
};

}  // namespace Wfctl

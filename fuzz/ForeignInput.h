#pragma once

#include "files/CaptureWriter.h"
#include "files/ForeignFile.h"
#include "store/MemBudget.h"
#include "store/SmpData.h"

#include <QTemporaryFile>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

/// What the fuzz targets of other programs' files share.

inline void require(bool holds, const char *what)
{
    if (!holds) {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

/// Every channel with data ends in one end mark, and its entries increase.
inline void checkTree(const SmpData &data)
{
    for (int chn = 0; chn < data.chnCount; ++chn) {
        if (data.chnRoots()[std::size_t(chn)] == nullptr) {
            continue;
        }
        require(data.lastPosition(chn) == data.smpCount(), "the end mark stands at the end");
        std::int64_t previous = 0;
        for (std::int64_t i = 0; i < std::min<std::int64_t>(data.entryCount(chn), 1000); ++i) {
            const std::int64_t entry = data.entryAt(chn, {}, i);
            require(entry > previous && entry <= data.smpCount(), "entries increase up to the end");
            previous = entry;
        }
    }
}

/// Reads the bytes as a file of `kind`, and writes what is accepted as a dump, which must read again.
inline int readAnything(const std::uint8_t *bytes, std::size_t size, ForeignKind kind, const ForeignOptions &options)
{
    constexpr std::int64_t plenty = std::int64_t(256) << 20;
    memBudget = plenty;
    static QTemporaryFile file;
    require(file.isOpen() || file.open(), "a file can be made");
    require(file.resize(0) && file.seek(0), "the file can be emptied");
    require(file.write(reinterpret_cast<const char *>(bytes), qint64(size)) == qint64(size) && file.flush(),
            "the file can be written");
    ForeignCapture read = readForeign(file.fileName(), kind, options);
    require(read.isDone() == (read.capture != nullptr), "a capture, or why there is none");
    if (read.isDone()) {
        checkTree(*read.capture);
        require(read.capture->smpCount() > 0 && read.capture->smpFrequ() > 0, "a capture has samples and a rate");
        CaptureOut out;
        out.kind = CaptureKind::Vcd;
        out.names = read.names;
        out.part.channels.resize(std::size_t(read.capture->chnCount));
        std::fill_n(out.part.channels.begin(), read.names.size(), std::uint8_t(1));
        out.part.end = double(read.capture->smpCount());
        require(file.resize(0) && file.seek(0), "the file can be emptied");
        require(writeCaptureTo(file, *read.capture, out).isDone() && file.flush(), "what was read is written");
        const ForeignCapture back = readForeign(file.fileName(), ForeignKind::Vcd);
        require(back.isDone() && back.capture->smpCount() == read.capture->smpCount() &&
                    back.capture->smpFrequ() == read.capture->smpFrequ(),
                "what was written reads back");
        for (int chn = 0; chn < read.names.size(); ++chn) {
            require(back.capture->entryCount(chn) == read.capture->entryCount(chn), "with the same changes");
        }
    }
    read.capture.reset();
    require(memBudget == plenty, "all memory has been given back");
    return 0;
}

#pragma once

#include "files/DataFile.h"
#include "files/DataFileBytes.h"

#include <vector>

/// Saves a range of `data` into a new file, which becomes the result; empty when the save fails.
inline QByteArray saved(SmpData &data, const std::vector<std::uint8_t> &select, double start, double end)
{
    const FileFolder folder;
    DataFile file(&data);
    file.chnSelect = select.data();
    file.setRange(start, end);
    file.file.setFileName(folder.path(QStringLiteral("a.cxdat")));
    if (!file.file.open(QIODevice::Append) || !file.saveData()) {
        return {};
    }
    file.file.close();
    return folder.read();
}

/// All channels chosen.
inline std::vector<std::uint8_t> all(int chnCount)
{
    return std::vector<std::uint8_t>(std::size_t(chnCount), 1);
}

#include "files/ForeignFile.h"

#include "files/CsvReader.h"
#include "files/RawReader.h"
#include "files/SrReader.h"
#include "files/VcdReader.h"
#include "store/SmpData.h"

#include <QFile>
#include <QFileInfo>

namespace {

/// Why a file cannot be opened; Done if it is open.
FileResult openPlain(QFile &file)
{
    const QFileInfo info(file.fileName());
    if (!info.exists()) {
        return FileResult::NoSuchFile;
    }
    if (!info.isFile()) { // opening it may wait for ever
        return FileResult::NotPlain;
    }
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return info.isReadable() ? FileResult::Failed : FileResult::NoRights;
    }
    return FileResult::Done;
}

ForeignCapture readKind(QFile &file, ForeignKind kind, const ForeignOptions &options, const ForeignHook &hook)
{
    switch (kind) {
    case ForeignKind::Csv:
        return readCsv(file, options, hook);
    case ForeignKind::Raw:
        return readRaw(file, options, hook);
    case ForeignKind::Sr:
        file.close();
        return readSr(file.fileName(), options, hook);
    case ForeignKind::Vcd:
        return readVcd(file, options, hook);
    case ForeignKind::None:
        break;
    }
    ForeignCapture none;
    none.result = FileResult::WrongKind;
    return none;
}

} // namespace

ForeignKind foreignKindOf(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("csv")) {
        return ForeignKind::Csv;
    }
    if (suffix == QLatin1String("bin") || suffix == QLatin1String("raw")) {
        return ForeignKind::Raw;
    }
    if (suffix == QLatin1String("sr")) {
        return ForeignKind::Sr;
    }
    return suffix == QLatin1String("vcd") ? ForeignKind::Vcd : ForeignKind::None;
}

bool isForeignCapture(const QString &path)
{
    const ForeignKind kind = foreignKindOf(path);
    return kind == ForeignKind::Sr || kind == ForeignKind::Vcd;
}

ForeignCapture readForeign(const QString &path, ForeignKind kind, const ForeignOptions &options,
                           const ForeignHook &hook)
{
    QFile file(path);
    ForeignCapture capture;
    capture.result = openPlain(file);
    return capture.isDone() ? readKind(file, kind, options, hook) : std::move(capture);
}

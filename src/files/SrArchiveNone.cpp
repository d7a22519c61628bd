// A build without libzip: session archives are neither read nor written.

#include "files/SrArchive.h"
#include "files/SrWriter.h"

struct SrArchive::Handles {};

bool SrArchive::isBuilt()
{
    return false;
}

SrArchive::SrArchive(const QString &)
    : m_handles(std::make_unique<Handles>()),
      m_error(QStringLiteral("this program was built without the library for .sr files"))
{}

SrArchive::~SrArchive() = default;

bool SrArchive::readSmall(const char *, std::int64_t, QByteArray &)
{
    return false;
}

bool SrArchive::open(const Entry &)
{
    return false;
}

std::int64_t SrArchive::read(std::span<std::uint8_t>)
{
    return -1;
}

FileResult writeSr(const QString &, const SmpData &, const DataSelection &, const QStringList &, const DataPieceHook &)
{
    return FileResult::Failed;
}

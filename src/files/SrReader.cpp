#include "files/SrReader.h"

#include "files/SampleFiller.h"
#include "files/SrArchive.h"
#include "files/SrMetadata.h"

#include <algorithm>

namespace {

ForeignCapture failed(FileResult result, const QString &detail = {})
{
    ForeignCapture capture;
    capture.result = result;
    capture.detail = detail;
    return capture;
}

ForeignCapture damaged(const QString &detail)
{
    return failed(FileResult::Damaged, detail);
}

/// The entries that hold the samples, in their order.
struct Chunks {
    std::vector<SrArchive::Entry> entries;
    std::int64_t bytes = 0; ///< unpacked
    QString error;
};

/// The number behind "logic-1-"; 0 for "logic-1" itself, -1 for any other name.
int chunkNumber(const QByteArray &name, const QByteArray &base)
{
    if (name == base) {
        return 0;
    }
    if (!name.startsWith(base + '-')) {
        return -1;
    }
    const QByteArray digits = name.mid(base.size() + 1);
    bool isNumber = false;
    const int number = digits.toInt(&isNumber);
    return isNumber && number > 0 && QByteArray::number(number) == digits ? number : -1;
}

Chunks chunksOf(const SrArchive &archive, const SrMetadata &metadata)
{
    const QByteArray base = QByteArray::fromStdString(metadata.captureFile);
    std::vector<std::pair<int, SrArchive::Entry>> numbered;
    for (const SrArchive::Entry &entry : archive.entries()) {
        const int number = chunkNumber(entry.name, base);
        if (number >= 0) {
            numbered.emplace_back(number, entry);
        }
    }
    std::sort(numbered.begin(), numbered.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    Chunks chunks;
    int expected = numbered.empty() || numbered.front().first != 0 ? 1 : 0;
    for (auto &[number, entry] : numbered) {
        const QString name = QString::fromUtf8(entry.name.left(80));
        if (number != expected) {
            chunks.error = QStringLiteral("%1-%2 is missing").arg(QString::fromUtf8(base.left(80))).arg(expected);
        } else if (entry.size % metadata.unitSize != 0) {
            chunks.error = QStringLiteral("%1: %2 bytes are no whole samples of %3")
                               .arg(name)
                               .arg(entry.size)
                               .arg(metadata.unitSize);
        }
        if (!chunks.error.isEmpty()) {
            return chunks;
        }
        ++expected;
        chunks.bytes += entry.size;
        chunks.entries.push_back(std::move(entry));
    }
    if (chunks.bytes < 1) {
        chunks.error = QStringLiteral("there are no samples of %1 in it").arg(QString::fromUtf8(base.left(80)));
    } else if (chunks.bytes / metadata.unitSize > CaptureFiller::positionMax) {
        chunks.error = QStringLiteral("more than 2^40 samples");
    }
    return chunks;
}

/// Reads "version" and "metadata". @return empty, or why not
QString describe(SrArchive &archive, SrMetadata &metadata)
{
    constexpr std::int64_t versionMax = 16;       // bytes
    constexpr std::int64_t metadataMax = 1 << 20; // bytes
    QByteArray version;
    QByteArray text;
    if (!archive.readSmall("version", versionMax, version) || !archive.readSmall("metadata", metadataMax, text)) {
        return archive.error();
    }
    if (version.trimmed() != "2") {
        return QStringLiteral("version: \"%1\" is none that can be read; 2 is")
            .arg(QString::fromUtf8(version.trimmed()));
    }
    metadata = SrMetadata::parse(text);
    return metadata.error.isEmpty() ? QString() : QStringLiteral("metadata: %1").arg(metadata.error);
}

/// @return Done, or how it ended
ForeignCapture fill(SrArchive &archive, const Chunks &chunks, SampleFiller &filler, const ForeignHook &hook)
{
    std::vector<std::uint8_t> piece(std::size_t((1 << 20) / filler.row() * filler.row()));
    std::int64_t done = 0;
    for (const SrArchive::Entry &entry : chunks.entries) {
        if (!archive.open(entry)) {
            return damaged(archive.error());
        }
        for (std::int64_t got = -1; got != 0;) {
            got = archive.read(piece);
            if (got < 0) {
                return damaged(archive.error());
            }
            if (!filler.add({piece.data(), std::size_t(got)})) {
                return failed(FileResult::NoMemory);
            }
            done += got;
            if (hook && !hook(double(done) / double(chunks.bytes))) {
                return failed(FileResult::Cancelled);
            }
        }
    }
    return {};
}

} // namespace

ForeignCapture readSr(const QString &path, const ForeignOptions &options, const ForeignHook &hook)
{
    SrArchive archive(path);
    if (!archive.error().isEmpty()) {
        return failed(SrArchive::isBuilt() ? FileResult::Damaged : FileResult::WrongKind, archive.error());
    }
    SrMetadata metadata;
    const QString refusal = describe(archive, metadata);
    if (!refusal.isEmpty()) {
        return damaged(refusal);
    }
    const ChannelOffer::Pick pick = metadata.offer.pick(options.channels);
    if (!pick.error.isEmpty()) {
        return damaged(pick.error);
    }
    const Chunks chunks = chunksOf(archive, metadata);
    if (!chunks.error.isEmpty()) {
        return damaged(chunks.error);
    }
    std::vector<int> bits;
    for (const ChannelOffer::Bit &bit : pick.bits) {
        bits.push_back(metadata.bits[std::size_t(bit.entry)]);
    }
    SampleFiller filler(metadata.unitSize, std::move(bits));
    ForeignCapture capture = filler.isGood() ? fill(archive, chunks, filler, hook) : failed(FileResult::NoMemory);
    if (!capture.isDone()) {
        return capture;
    }
    if (metadata.analog > 0) {
        capture.notes.append(QStringLiteral("%1 analog channels are passed over").arg(metadata.analog));
    }
    capture.names = pick.names;
    capture.capture = filler.finish(metadata.rate);
    return capture;
}

bool foreignKindIsBuilt(ForeignKind kind)
{
    return kind != ForeignKind::Sr || SrArchive::isBuilt();
}

#include "cli/CaptureJob.h"

#include "cli/Console.h"
#include "cli/Terminal.h"
#include "files/ChannelOffer.h"
#include "settings/Config.h"

#include <QFileInfo>
#include <QIODevice>

#include <algorithm>
#include <cstddef>

namespace CaptureJob {

namespace {

/// As a device, for what writes to one.
class StandardOutput final : public QIODevice {
public:
    StandardOutput() { QIODevice::open(QIODevice::WriteOnly); }
    [[nodiscard]] bool isSequential() const override { return true; }

protected:
    qint64 readData(char * /*data*/, qint64 /*most*/) override { return -1; }
    qint64 writeData(const char *data, qint64 size) override
    {
        return Console::write({data, std::size_t(size)}) ? size : -1;
    }
};

} // namespace

QString readChannels(const Arguments::Parsed &parsed, QStringList &items)
{
    for (const QString &list : parsed.values(QStringLiteral("--channels"))) {
        for (const QString &item : list.split(QLatin1Char(','))) {
            if (item.trimmed().isEmpty()) { // such as a variable of a script that is not set: it means no channel
                return QStringLiteral("\"%1\" is no list of channels such as 0-3,7 or CLK,DATA").arg(list);
            }
            items.append(item.trimmed());
        }
    }
    return {};
}

QStringList names(const SmpData &data)
{
    QStringList all;
    for (int chn = 0; chn < data.chnCount; ++chn) {
        all.append(chnShowNameGet(chn));
    }
    return all;
}

QString pick(const SmpData &data, const QStringList &wanted, std::vector<std::uint8_t> &channels)
{
    channels.assign(std::size_t(data.chnCount), 0);
    const auto holdsData = [&data](int chn) { return data.chnRoots()[std::size_t(chn)] != nullptr; };
    if (wanted.isEmpty()) {
        for (int chn = 0; chn < data.chnCount; ++chn) {
            channels[std::size_t(chn)] = holdsData(chn) ? 1 : 0;
        }
        return std::count(channels.cbegin(), channels.cend(), 1) > 0 ? QString()
                                                                     : QStringLiteral("no channel holds data");
    }
    ChannelOffer offer;
    for (const QString &name : names(data)) {
        ChannelOffer::Entry entry;
        entry.name = name.toStdString();
        offer.add(std::move(entry));
    }
    const ChannelOffer::Pick picked = offer.pick(wanted);
    for (const ChannelOffer::Bit &bit : picked.bits) {
        if (!holdsData(bit.entry)) {
            return QStringLiteral("channel %1 holds no data").arg(bit.entry);
        }
        channels[std::size_t(bit.entry)] = 1;
    }
    return picked.error;
}

QString overwritten(const QString &in, const QString &out)
{
    const QFileInfo file(in);
    const bool isSame = file.isFile() && file.canonicalFilePath() == QFileInfo(out).canonicalFilePath();
    return isSame ? QStringLiteral("\"%1\" is read, and cannot be written").arg(in) : QString();
}

int write(const QString &path, const SmpData &data, CaptureOut &out)
{
    FileOutcome outcome;
    {
        Terminal::Progress line(QStringLiteral("Writing"));
        out.hook = [&line](double share) {
            line.show(share);
            return !Terminal::wasInterrupted();
        };
        StandardOutput standard;
        outcome = path == QLatin1String("-") ? writeCaptureTo(standard, data, out) : writeCaptureFile(path, data, out);
    }
    if (Terminal::wasInterrupted()) {
        return Terminal::interrupted;
    }
    if (outcome.isDone()) {
        return Terminal::good;
    }
    const bool isArchive = out.kind == CaptureKind::Sr;
    const QString reason = isArchive && !foreignKindIsBuilt(ForeignKind::Sr)
                               ? QStringLiteral("this program was built without the library for .sr files")
                           : path != QLatin1String("-") ? fileReason(outcome)
                           : isArchive                  ? QStringLiteral("an archive needs a file (-o)")
                                                        : QStringLiteral("the output could not be written");
    Terminal::say(path == QLatin1String("-") ? reason : QStringLiteral("%1: %2").arg(path, reason));
    return Terminal::badInput;
}

} // namespace CaptureJob

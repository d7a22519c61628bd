#include "cli/CaptureJob.h"

#include "cli/Console.h"
#include "cli/Terminal.h"
#include "files/ChannelOffer.h"
#include "settings/Config.h"

#include <QFileInfo>
#include <QIODevice>

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace CaptureJob {

namespace {

/// The standard output, or a device or a pipe that has a name, for what writes to a QIODevice.
class StreamDevice final : public QIODevice {
public:
    explicit StreamDevice(const QString &path) : m_stream(path == QLatin1String("-") ? stdout : Console::open(path))
    {
        if (m_stream != nullptr) {
            QIODevice::open(QIODevice::WriteOnly);
        }
    }
    ~StreamDevice() override
    {
        if (m_stream != nullptr && m_stream != stdout) {
            std::fclose(m_stream);
        }
    }
    StreamDevice(const StreamDevice &) = delete;
    StreamDevice &operator=(const StreamDevice &) = delete;
    [[nodiscard]] bool isSequential() const override { return true; }

protected:
    qint64 readData(char * /*data*/, qint64 /*most*/) override { return -1; }
    qint64 writeData(const char *data, qint64 size) override
    {
        return Console::write({data, std::size_t(size)}, m_stream) ? size : -1;
    }

private:
    std::FILE *m_stream; ///< null if it could not be opened
};

FileOutcome writeTo(const QString &path, bool isStream, const SmpData &data, const CaptureOut &out)
{
    if (!isStream || out.kind == CaptureKind::Sr) { // an archive needs a file
        return path == QLatin1String("-") ? FileOutcome{FileResult::WrongKind} : writeCaptureFile(path, data, out);
    }
    StreamDevice device(path);
    return device.isOpen() ? writeCaptureTo(device, data, out) : FileOutcome{FileResult::Failed};
}

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
    const bool isStream = path == QLatin1String("-") || Console::isStream(path);
    FileOutcome outcome;
    {
        Terminal::Progress line(QStringLiteral("Writing"));
        out.hook = [&line](double share) {
            line.show(share);
            return !Terminal::wasInterrupted();
        };
        outcome = writeTo(path, isStream, data, out);
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
                           : !isStream ? fileReason(outcome)
                           : isArchive ? QStringLiteral("an archive needs a file (-o)")
                                       : QStringLiteral("the output could not be written");
    Terminal::say(path == QLatin1String("-") ? reason : QStringLiteral("%1: %2").arg(path, reason));
    return Terminal::badInput;
}

} // namespace CaptureJob

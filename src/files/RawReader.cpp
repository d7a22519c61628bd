#include "files/RawReader.h"

#include "files/ChannelOffer.h"
#include "files/SampleFiller.h"

#include <QIODevice>

#include <algorithm>

namespace {

ForeignCapture failed(FileResult result, const QString &detail)
{
    ForeignCapture capture;
    capture.result = result;
    capture.detail = detail;
    return capture;
}

/// Channels without names, as many as rows of `bytes` hold.
ChannelOffer offerOf(int bytes)
{
    ChannelOffer offer;
    for (int chn = 0; chn < bytes * 8; ++chn) {
        offer.add({});
    }
    return offer;
}

/// The bytes that rows need for the channels picked.
int rowFor(const ChannelOffer::Pick &pick)
{
    int last = 0;
    for (const ChannelOffer::Bit &bit : pick.bits) {
        last = std::max(last, int(bit.entry));
    }
    return last / 8 + 1;
}

} // namespace

ForeignCapture readRaw(QIODevice &device, const ForeignOptions &options, const ForeignHook &hook)
{
    constexpr int rowMax = 128; // bytes; as many as a number of a channel may ask for
    if (options.rate < 1 || options.rate > CaptureFiller::positionMax) {
        return failed(FileResult::Damaged, QStringLiteral("the rate of plain bytes must be told (--rate)"));
    }
    if (options.unitSize < 0 || options.unitSize > rowMax) {
        return failed(FileResult::Damaged, QStringLiteral("a sample has 1 to %1 bytes").arg(rowMax));
    }
    const bool guesses = options.unitSize == 0;
    ChannelOffer::Pick pick = offerOf(!guesses                     ? options.unitSize
                                      : options.channels.isEmpty() ? 1
                                                                   : rowMax)
                                  .pick(options.channels);
    if (!pick.error.isEmpty()) {
        return failed(FileResult::Damaged, pick.error);
    }
    std::vector<int> bits;
    for (const ChannelOffer::Bit &bit : pick.bits) {
        bits.push_back(bit.entry);
    }
    const int row = guesses ? rowFor(pick) : options.unitSize;
    if (device.size() < row || device.size() % row != 0) {
        return failed(FileResult::Damaged,
                      QStringLiteral("%1 bytes are no whole samples of %2").arg(device.size()).arg(row));
    }
    SampleFiller filler(row, std::move(bits));
    std::vector<std::uint8_t> piece(std::size_t((1 << 20) / row * row));
    bool isGood = filler.isGood();
    for (qint64 left = device.size(); left > 0 && isGood;) {
        const qint64 want = std::min<qint64>(left, qint64(piece.size()));
        if (device.read(reinterpret_cast<char *>(piece.data()), want) != want) {
            return failed(FileResult::Failed, QStringLiteral("it cannot be read further"));
        }
        left -= want;
        isGood = filler.add({piece.data(), std::size_t(want)});
        if (hook && !hook(1 - double(left) / double(device.size()))) {
            return failed(FileResult::Cancelled, {});
        }
    }
    if (!isGood) {
        return failed(filler.isTooLong() ? FileResult::Damaged : FileResult::NoMemory,
                      filler.isTooLong() ? QStringLiteral("more than 2^40 samples") : QString());
    }
    ForeignCapture capture;
    for (std::size_t i = 0; i < pick.bits.size(); ++i) {
        capture.names.append(QString());
    }
    capture.capture = filler.finish(options.rate);
    return capture;
}

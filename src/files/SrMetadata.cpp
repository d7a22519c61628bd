#include "files/SrMetadata.h"

#include "files/CaptureFiller.h"
#include "files/ForeignFile.h"
#include "files/SampleFiller.h"

#include <QRegularExpression>

#include <cmath>

namespace {

constexpr int nameBytesMax = 4096; ///< of one channel's name

} // namespace

std::int64_t rateOfText(const QString &text)
{
    static const QRegularExpression form(
        QStringLiteral("^([0-9]{1,15}(?:\\.[0-9]{1,12})?) ?([kKmMgG]?)(?:[hH][zZ])?$"));
    const QRegularExpressionMatch match = form.match(text.trimmed());
    if (!match.hasMatch()) {
        return 0;
    }
    const QString unit = match.captured(2).toLower();
    const double factor = unit.isEmpty()               ? 1
                          : unit == QLatin1String("k") ? 1e3
                          : unit == QLatin1String("m") ? 1e6
                                                       : 1e9;
    const double hertz = match.captured(1).toDouble() * factor;
    return hertz <= double(CaptureFiller::positionMax) ? std::int64_t(std::llround(hertz)) : 0;
}

QByteArray srRateText(std::int64_t rate)
{
    struct Unit {
        const char *name;
        std::int64_t hertz;
    };
    for (const Unit &unit : {Unit{" GHz", 1'000'000'000}, Unit{" MHz", 1'000'000}, Unit{" kHz", 1000}}) {
        if (rate >= unit.hertz && rate % unit.hertz == 0) {
            return QByteArray::number(qlonglong(rate / unit.hertz)) + unit.name;
        }
    }
    return QByteArray::number(qlonglong(rate)) + " Hz";
}

void SrMetadata::take(const QByteArray &key, const QByteArray &value, std::map<int, QByteArray> &names)
{
    bool isNumber = true;
    if (key == "capturefile") {
        captureFile = value.toStdString();
    } else if (key == "samplerate") {
        rate = rateOfText(QString::fromLatin1(value));
        isNumber = rate > 0;
    } else if (key == "unitsize") {
        unitSize = value.toInt(&isNumber);
        isNumber = isNumber && unitSize >= 1 && unitSize <= SampleFiller::rowMax;
    } else if (key == "total probes") {
        m_probes = value.toInt(&isNumber);
        isNumber = isNumber && m_probes >= 0 && m_probes <= probesMax;
    } else if (key == "total analog") {
        analog = value.toInt(&isNumber);
    } else if (key.startsWith("probe")) {
        const int number = key.mid(5).toInt(&isNumber);
        isNumber = isNumber && number >= 1 && number <= probesMax;
        if (isNumber) {
            names[number] = value.left(nameBytesMax);
        }
    }
    if (!isNumber) {
        error = QStringLiteral("\"%1=%2\" cannot be")
                    .arg(QString::fromUtf8(key.left(40)), QString::fromUtf8(value.left(40)));
    }
}

void SrMetadata::close(int probes, const std::map<int, QByteArray> &names)
{
    if (captureFile.empty()) {
        error = QStringLiteral("there are no logic channels");
    } else if (rate < 1) {
        error = QStringLiteral("there is no sample rate");
    } else if (unitSize < 1) {
        error = QStringLiteral("there is no size of a sample");
    } else if (names.empty() && (probes < 1 || probes > unitSize * 8)) {
        error = QStringLiteral("%1 channels have no room in %2 bytes").arg(probes).arg(unitSize);
    } else if (!names.empty() && names.rbegin()->first > unitSize * 8) {
        error = QStringLiteral("channel %1 has no room in %2 bytes").arg(names.rbegin()->first).arg(unitSize);
    }
    if (!error.isEmpty()) {
        return;
    }
    const auto add = [this](int bit, const QByteArray &name) {
        ChannelOffer::Entry entry;
        entry.name = name.toStdString();
        offer.add(std::move(entry));
        bits.push_back(bit);
    };
    for (const auto &[number, name] : names) {
        add(number - 1, name);
    }
    for (int bit = 0; names.empty() && bit < probes; ++bit) {
        add(bit, {});
    }
    if (offer.isTooMuch()) {
        error = QStringLiteral("the names are too long");
    }
}

SrMetadata SrMetadata::parse(const QByteArray &text)
{
    SrMetadata found;
    std::map<int, QByteArray> names;
    bool inDevice = false;
    int number = 0;
    for (const QByteArray &whole : text.split('\n')) {
        ++number;
        const QByteArray line = whole.trimmed();
        if (line.startsWith('[')) {
            inDevice = line == "[device 1]";
            continue;
        }
        const int equals = line.indexOf('=');
        if (!inDevice || equals < 1) {
            continue;
        }
        found.take(line.left(equals).trimmed(), line.mid(equals + 1).trimmed(), names);
        if (!found.error.isEmpty()) {
            found.error.prepend(QStringLiteral("line %1: ").arg(number));
            return found;
        }
    }
    found.close(found.m_probes, names);
    return found;
}

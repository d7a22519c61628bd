#pragma once

#include "files/ChannelOffer.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <map>

/// What the entry "metadata" of a session archive tells of its first device. Private to this folder.
struct SrMetadata {
    static constexpr int probesMax = 32768; ///< as many as the longest row holds

    std::int64_t rate = 0;   ///< Hz
    int unitSize = 0;        ///< bytes a sample
    int analog = 0;          ///< channels
    std::string captureFile; ///< "logic-1"; empty for no logic channels
    ChannelOffer offer;      ///< the channels by their bits
    std::vector<int> bits;   ///< of each of them
    QString error;           ///< with the number of the line; empty for none

    [[nodiscard]] static SrMetadata parse(const QByteArray &text);

private:
    void take(const QByteArray &key, const QByteArray &value, std::map<int, QByteArray> &names);
    void close(int probes, const std::map<int, QByteArray> &names);
    int m_probes = 0;
};

/// A rate as archives have it: "100 MHz", "12.5k", "24000000". @return whole Hz; 0 for what is none, or has no room in
/// 40 bits
[[nodiscard]] std::int64_t rateOfText(const QString &text);
/// A rate as rateOfText() takes it: "100 MHz", "12500 Hz".
[[nodiscard]] QByteArray srRateText(std::int64_t rate);

#pragma once

#include <cstdint>

/// Which part of a stream of samples is kept: how much has come, how much was dropped at its front, and with which
/// group the capture begins.
///
/// A stream has no framing: its first byte is the first byte of a group, and a group holds 16 samples of every channel
/// in two bytes each. Buffers end anywhere between words, so that dropping whole buffers may cut a group; the capture
/// then begins with the next one. Plain numbers without thread or memory; every operation costs some instructions.
class SmpStreamWindow {
public:
    static constexpr int groupSamples = 16;

    /// Begins at the start of a stream.
    /// @param chnCount  channels in the stream; below 1 counts as 1
    /// @param preTrig   samples to keep before the trigger; below 0 counts as 0
    void start(int chnCount, std::int64_t preTrig);

    /// Tells that a buffer of `bytes` has come.
    void receive(std::int64_t bytes) { m_recvBytes += bytes; }
    /// Tells that the oldest buffer, of `bytes`, was dropped.
    void drop(std::int64_t bytes);

    /// True when the oldest buffer, of `bytes`, may go while the trigger has not come: those behind it hold the samples
    /// to keep before the earliest sample at which it still can come, and a group at least, which is what a wait shows
    /// that is stopped.
    [[nodiscard]] bool mayDrop(std::int64_t bytes) const;

    /// Tells that the trigger is the stream's sample `sample`: from here on the capture begins with the group that
    /// holds the sample `preTrig` before it, or with the first one left. Once a stream.
    /// @return the trigger's position in the capture, from 0
    std::int64_t trigger(std::int64_t sample);

    [[nodiscard]] std::int64_t groupBytes() const { return m_groupBytes; }
    [[nodiscard]] std::int64_t preTrig() const { return m_preTrig; }
    [[nodiscard]] std::int64_t recvBytes() const { return m_recvBytes; } ///< since the start
    [[nodiscard]] std::int64_t dropBytes() const { return m_dropBytes; } ///< of whole buffers, not rounded
    /// Groups that have come whole since the start.
    [[nodiscard]] std::int64_t recvGroups() const { return m_recvBytes / m_groupBytes; }
    /// Samples of the capture that have come so far; 0 or more.
    [[nodiscard]] std::int64_t samplesHeld() const;
    /// Bytes from the oldest buffer's first one to the capture's first one; may reach beyond that buffer.
    [[nodiscard]] std::int64_t firstOffset() const { return m_firstGroup * m_groupBytes - m_dropBytes; }

private:
    [[nodiscard]] std::int64_t groupBehind(std::int64_t bytes) const;

    std::int64_t m_groupBytes = 2;
    std::int64_t m_preTrig = 0;
    std::int64_t m_recvBytes = 0;
    std::int64_t m_dropBytes = 0;
    std::int64_t m_firstGroup = 0; ///< of the stream, with which the capture begins
};

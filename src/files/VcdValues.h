#pragma once

#include "files/CaptureFiller.h"
#include "files/ForeignFile.h"
#include "files/TimeGrid.h"
#include "files/VcdDeclarations.h"

#include <cstdint>
#include <memory>
#include <vector>

/// The values of a value change dump (IEEE Std 1364-2005, clause 18.2). Private to this folder.

enum class VcdWord : std::uint8_t;

/// How reading the values ended.
enum class VcdEnded { Done, Bad, Cancelled, NoMemory, NotOfRate };

/// The values of a dump on their way to the store. One thread at a time.
class VcdValues {
public:
    VcdValues(VcdText &text, const VcdDeclarations &declared, const ChannelOffer::Pick &pick, bool takesRate)
        : m_text(text),
          m_declared(declared),
          m_filler(int(pick.bits.size())),
          m_grid(m_filler, declared.ticksPerSecond, takesRate ? declared.toldRate : 0, false),
          m_signals(std::size_t(declared.codes.count()))
    {
        assign(pick);
    }

    [[nodiscard]] VcdEnded read(qint64 size, const ForeignHook &hook);
    [[nodiscard]] std::unique_ptr<SmpData> finish()
    {
        const std::int64_t trigger = std::min(m_declared.toldTrigger, m_samples - 1);
        return m_filler.finish(m_samples, m_grid.rate(), std::max<std::int64_t>(trigger, 0));
    }
    [[nodiscard]] std::int64_t unknowns() const { return m_unknowns; }

private:
    /// The channels that a code carries.
    struct Signal {
        std::uint64_t mask = 0; ///< of its lowest bit
        std::int32_t first = 0; ///< in the list of targets
        std::int32_t count = 0; ///< there; 0 for one that has no other bits
    };

    /// A channel, and the bit of a vector that it is.
    struct Target {
        std::int32_t code;
        std::int32_t bit;
        std::uint64_t mask;
    };

    void assign(const ChannelOffer::Pick &pick);
    [[nodiscard]] VcdEnded readWords();
    [[nodiscard]] VcdEnded takeWord(const char *&at, VcdWord kind);
    [[nodiscard]] VcdEnded takeScalar(const char *&at, VcdWord kind);
    [[nodiscard]] VcdEnded takeVector(const char *&at);
    void setVector(const Signal &signal, std::string_view digits);
    [[nodiscard]] VcdEnded takeTime(const char *&at);
    [[nodiscard]] VcdEnded takeCommand(const char *&at);
    [[nodiscard]] VcdEnded commit();
    [[nodiscard]] std::int64_t placed(std::int64_t ticks, VcdEnded &ended);
    [[nodiscard]] VcdEnded close();
    [[nodiscard]] const char *wordEnd(const char *from) const;
    /// The signal of a value at `at`; null, with the failure told, for a code that is none.
    [[nodiscard]] const Signal *signalOf(const char *at, std::string_view code);
    [[nodiscard]] VcdEnded bad(const char *at, const QString &what)
    {
        m_text.fail(at, what);
        return VcdEnded::Bad;
    }

    VcdText &m_text;
    const VcdDeclarations &m_declared;
    CaptureFiller m_filler;
    TimeGrid m_grid;
    std::vector<Signal> m_signals; ///< of each code
    std::vector<Target> m_targets;
    std::uint64_t m_levels = 0; ///< behind the values read so far
    std::int64_t m_now = 0;     ///< ticks
    std::int64_t m_last = 0;    ///< position of the last change
    std::int64_t m_samples = 0;
    std::int64_t m_unknowns = 0;
    bool m_hasTime = false;
    bool m_hasValue = false; ///< behind the last time
};

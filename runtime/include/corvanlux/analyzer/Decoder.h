#pragma once

#include "Analyzer.h"
#include "ChannelReader.h"
#include "DecoderResults.h"
#include "DecoderSettings.h"
#include "DeviceCollection.h"
#include "EdgeGroup.h"
#include "Simulation.h"

#include <cstdint>
#include <memory>
#include <string>

namespace lux {

/// What all decoders share; derive from Decoder below.
class LUX_ANALYZER_API DecoderBase : public Analyzer {
public:
    /// @param name  the display name; must outlive the decoder
    explicit DecoderBase(const char *name);
    ~DecoderBase() override;

    void RunWorker() final;
    std::uint32_t BuildSimulation(std::int64_t newestSample, std::uint32_t sampleRate,
                                  SimulationChannelDescriptor **channels) final;
    [[nodiscard]] std::uint32_t NeededSampleRate() override;
    [[nodiscard]] const char *AnalyzerName() const final;
    [[nodiscard]] bool NeedsRestart() override;
    void SetupResults() final;

protected:
    /// The decode loop. It ends by itself when a reader comes to the data's end; it may also return. An exception that
    /// is a std::exception fails the decode with its text. Destructors run in every case; they, and functions that
    /// read, must let unwinding pass (a function that reads is not noexcept).
    virtual void decode() = 0;
    /// Adds at least one element, and the pause behind it, to the signal. Called until it is long enough. A decoder
    /// without simulation adds nothing. Whatever goes on from call to call (an address that counts) belongs to the
    /// decoder. An exception is told to the user, and the decoder drives nothing more in this capture.
    virtual void simulate(Simulation &simulation);
    [[nodiscard]] virtual std::unique_ptr<AnalyzerResults> makeResults() = 0;

    /// The channel's reader; the same for the same channel. For "None" one that is low and has no edges.
    [[nodiscard]] ChannelReader &reader(const Channel &channel) { return GetChannelReader(channel); }
    [[nodiscard]] std::int64_t sampleRate() const { return GetSampleRate(); }
    [[nodiscard]] Sample sampleCount() const { return GetSampleCount(); }
    /// Leaves the decode; the user is told this sentence.
    [[noreturn]] void fail(const std::string &message) { FailDecode(message.c_str()); }
    /// Tells the user something about this run, such as the bit rate that was found.
    void tell(const std::string &message) { TellAboutDecode(message.c_str()); }

private:
    struct Private;
    Private *m_private;
};

/// A decoder with its settings and its results, both of which it owns:
///
///     class UartAnalyzer final : public lux::Decoder<UartSettings, UartResults> {
///     public:
///         static constexpr const char *name = "UART/RS232/485";
///         UartAnalyzer() : Decoder(name) {}
///     protected:
///         void decode() override;
///         void simulate(lux::Simulation &simulation) override;
///     };
///     LUX_PLUGIN(UartAnalyzer)             // in one source file, at global scope
///
/// `SettingsType` is made without arguments; `ResultsType` from a constant reference to it, for each run anew.
template<class SettingsType, class ResultsType>
class Decoder : public DecoderBase {
public:
    explicit Decoder(const char *decoderName) : DecoderBase(decoderName) { SetAnalyzerSettings(&m_settings); }
    /// The results go first: they hold a reference to the settings, and an export may still be reading them.
    ~Decoder() override { SetAnalyzerResults(nullptr); }

protected:
    SettingsType m_settings; ///< changed on the main thread only, and never during a run or while results are read

    [[nodiscard]] std::unique_ptr<AnalyzerResults> makeResults() final
    {
        return std::make_unique<ResultsType>(m_settings);
    }
    /// The results of this run.
    [[nodiscard]] ResultsType &results() const
    {
        AnalyzerResults *current = nullptr;
        GetAnalyzerResults(&current);
        return static_cast<ResultsType &>(*current);
    }
};

namespace detail {

/// The models on which a decoder is offered, "9,65": its member `models`, or all.
template<class AnalyzerType>
[[nodiscard]] constexpr const char *modelsOf()
{
    if constexpr (requires { AnalyzerType::models; })
        return AnalyzerType::models;
    else
        return "";
}

} // namespace detail
} // namespace lux

/// The four entry points of a plug-in whose decoder is this class. A macro since they are unmangled exports.
#define LUX_PLUGIN(AnalyzerType)                                                                                       \
    extern "C" LUX_PLUGIN_EXPORT Analyzer *CreateAnalyzer()                                                            \
    {                                                                                                                  \
        return new AnalyzerType;                                                                                       \
    }                                                                                                                  \
    extern "C" LUX_PLUGIN_EXPORT void DestroyAnalyzer(Analyzer *analyzer)                                              \
    {                                                                                                                  \
        delete analyzer;                                                                                               \
    }                                                                                                                  \
    extern "C" LUX_PLUGIN_EXPORT const char *GetAnalyzerName()                                                         \
    {                                                                                                                  \
        return AnalyzerType::name;                                                                                     \
    }                                                                                                                  \
    extern "C" LUX_PLUGIN_EXPORT const char *GetParaInfoList()                                                         \
    {                                                                                                                  \
        return lux::detail::modelsOf<AnalyzerType>();                                                                  \
    }

#pragma once

#include "files/JobDialog.h"
#include "settings/ConfigDocument.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class DataFile;
enum class WriteFault;
class QFile;
class SmpData;

/// How a job on a file ended.
enum class FileResult {
    Done,
    Cancelled,
    NoSuchFile,
    NoFolder,  ///< writing: the folder does not exist
    NotPlain,  ///< a folder, a pipe, a device
    WrongKind, ///< reading: another suffix, or no settings and data where they belong
    NoRights,
    DiskFull,
    Damaged,    ///< reading
    OtherModel, ///< reading: the data has another number of channels than the model of the settings
    NoMemory,
    NoCapture,       ///< writing: there is no complete capture with a sample
    SettingsTooLong, ///< writing: readers would not find their end
    Failed           ///< the device, for another reason
};

/// What of it to tell.
struct FileOutcome {
    FileResult result = FileResult::Done;
    QStringList longest{};      ///< with SettingsTooLong: the settings that take the most room
    bool noChannels = false;    ///< read: the file holds no channel at all
    bool cut = false;           ///< read: the file ends before its last channel
    std::vector<int> missing{}; ///< read: the channels that are not there therefore, as far as they are known
    QString detail{};           ///< read of another program's file: what is wrong where, in English; may be empty
    [[nodiscard]] bool isDone() const { return result == FileResult::Done; }
};

/// Done for none.
[[nodiscard]] FileResult fileResultOf(WriteFault fault);
/// The reason of a failure as a translated sentence; empty for Done. Main thread.
[[nodiscard]] QString fileReason(const FileOutcome &outcome);
/// What an opened file lacks, as a translated text; empty for nothing. `nameOf` gives a channel's name. Main thread.
[[nodiscard]] QString fileWarning(const FileOutcome &outcome, const std::function<QString(int chn)> &nameOf);

/// A file that has been read, and is nobody's yet.
struct OpenedCapture {
    FileOutcome outcome;
    std::optional<ConfigDocument> settings; ///< there if Done
    /// The capture, closed; null for a settings file, and for a data file for which there was no room beside the former
    /// capture: it has been checked then, and is to be read again once that one is freed.
    std::unique_ptr<SmpData> capture;
    bool isData = false;
    QStringList notes{}; ///< of another program's file: what was passed over, in English
};

/// What a data file tells of its capture without being read as a whole.
struct CaptureFacts {
    /// A channel that is in the file.
    struct Channel {
        int chn = 0;
        std::int64_t edges = 0;
    };
    std::int64_t samples = 0;
    std::int64_t rate = 0;         ///< Hz
    std::int64_t trigger = 0;      ///< sample
    std::vector<Channel> channels; ///< in ascending order
};

/// What of a capture is written.
struct CapturePart {
    std::vector<std::uint8_t> channels; ///< one flag per digital channel; shorter or longer than those is NoCapture
    double start = 0;                   ///< samples
    double end = 0;                     ///< samples; both are swapped and limited to the capture
};

/// The kinds of export.
enum class ExportKind { Text, Binary };

/// Opens, saves and exports a capture with its settings: the way between files and what the caller hands in.
///
/// Knows no window, device or document of the program; nothing is changed but the files named. Reading fills a store of
/// its own, so that a failure or a cancel costs the caller nothing. Writing goes beside the target, which gets it when
/// it is whole and on the disk; where there was no file and the writing of a capture ends early, the part gets the
/// name.
///
/// Main thread, for whose events long jobs process as DataFile tells. Not to be called under a SmpReadLock.
class CaptureFile {
public:
    /// The number of digital channels of the model that settings name.
    using ChannelCount = std::function<int(const ConfigDocument &)>;

    /// Without `dialogs` long jobs are simply waited for.
    explicit CaptureFile(ChannelCount channelCount, JobDialogFactory dialogs = {});

    /// Asked after each piece, on the thread that does the job; false cancels it. May be empty.
    std::function<bool()> mayGoOn;
    /// False drops what was written when the writing of a capture ends early, even where there was no file.
    bool keepsPart = true;
    /// True reads a data file under whatever name.
    bool anySuffix = false;

    /// Reads a data file (.cxdat) or a settings file (.cxset), told apart by the suffix.
    /// @param former  the capture that the caller will free when it takes the new one; may be null. What fits into the
    ///                memory only in its place is checked to the last entry, but not kept
    [[nodiscard]] OpenedCapture open(const QString &path, const SmpData *former = nullptr) const;

    /// Looks at a file without reading the entries of its channels. Cost: one read a channel, and some more for facts.
    /// @param facts  out, of a data file that is Done; may be null. Entries are taken to be in order
    [[nodiscard]] OpenedCapture check(const QString &path, CaptureFacts *facts = nullptr) const;

    /// Writes a data file: settings and digital channels.
    [[nodiscard]] FileOutcome save(const QString &path, SmpData &data, const CapturePart &part,
                                   const ConfigDocument &settings) const;
    /// Writes a settings file.
    [[nodiscard]] static FileOutcome saveSettings(const QString &path, const ConfigDocument &settings);
    /// Writes digital channels as text or as a dump of samples. The names are those of the program's settings.
    [[nodiscard]] FileOutcome exportTo(const QString &path, SmpData &data, const CapturePart &part,
                                       ExportKind kind) const;

private:
    /// Where the capture lies in a file, and what it takes.
    struct Layout {
        std::int64_t headSize = 0; ///< bytes of the settings block
        std::int64_t bytes = 0;    ///< of memory
        int chnCount = 0;
    };
    [[nodiscard]] OpenedCapture readHeads(const QString &path, Layout &layout, CaptureFacts *facts = nullptr) const;
    [[nodiscard]] FileOutcome readSettings(QFile &file, Layout &layout, std::optional<ConfigDocument> &settings) const;
    void load(const QString &path, const Layout &layout, bool keep, OpenedCapture &opened) const;
    [[nodiscard]] FileOutcome write(DataFile &job, const QString &path, const CapturePart &part, int mode,
                                    const QByteArray &head) const;

    ChannelCount m_channelCount;
    JobDialogFactory m_dialogs;
};

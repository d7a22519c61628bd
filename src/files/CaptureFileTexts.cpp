// What CaptureFile.h tells its user.

#include "files/CaptureFile.h"
#include "settings/Language.h"

QString fileReason(const FileOutcome &outcome)
{
    switch (outcome.result) {
    case FileResult::Done:
        return {};
    case FileResult::Cancelled:
        return ::tr("It was cancelled.");
    case FileResult::NoSuchFile:
        return ::tr("The file does not exist.");
    case FileResult::NoFolder:
        return ::tr("The folder does not exist.");
    case FileResult::NotPlain:
        return ::tr("This is a folder, a pipe or a device, not a file.");
    case FileResult::WrongKind:
        return ::tr("This is no file of this program.");
    case FileResult::NoRights:
        return ::tr("You do not have the rights for this file or its folder.");
    case FileResult::DiskFull:
        return ::tr("The disk is full.");
    case FileResult::Damaged:
        return ::tr("The file is damaged.");
    case FileResult::OtherModel:
        return ::tr("The file holds another number of channels than its model has.");
    case FileResult::NoMemory:
        return ::tr("There is not enough memory.");
    case FileResult::NoCapture:
        return ::tr("There is no data.");
    case FileResult::SettingsTooLong:
        return ::tr("The settings are too long. The longest are:") + QLatin1Char(' ') +
               outcome.longest.join(QStringLiteral(", "));
    case FileResult::Failed:
        break;
    }
    return ::tr("The disk or the network reports an error.");
}

QString fileWarning(const FileOutcome &outcome, const std::function<QString(int chn)> &nameOf)
{
    QString text;
    if (outcome.cut) {
        QStringList names;
        for (const int chn : outcome.missing) {
            names += nameOf(chn);
        }
        text = ::tr("The file is incomplete. These channels are missing:") + QStringLiteral("\r\n") +
               names.join(QStringLiteral(", "));
    } else if (outcome.noChannels) {
        text = ::tr("The file holds no channels.");
    }
    return text;
}

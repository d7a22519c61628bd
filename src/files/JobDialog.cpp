#include "files/JobDialog.h"

#include "settings/Language.h"

std::unique_ptr<JobDialog> makeJobDialog(const JobDialogFactory &dialogs, bool isLoad)
{
    return dialogs(isLoad ? ::tr("Open File") : ::tr("Save File"),
                   (isLoad ? ::tr("Loading file, please wait") : ::tr("Saving file, please wait")) +
                       QStringLiteral("..."),
                   ::tr("Cancel"));
}

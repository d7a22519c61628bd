#pragma once

#include <QString>

#include <functional>
#include <memory>

/// The modal dialog of a long file job, as the job sees it. The program implements it with its progress dialog, a test
/// with a script. Main thread.
class JobDialog {
public:
    virtual ~JobDialog() = default;
    /// Percent. At 100 the dialog ends as accepted.
    virtual void setProgress(int percent) = 0;
    /// Runs until accepted (true) or cancelled by the user (false).
    [[nodiscard]] virtual bool exec() = 0;
};

/// Makes the dialog from its title, its label and the text of its one button, all translated.
using JobDialogFactory =
    std::function<std::unique_ptr<JobDialog>(const QString &title, const QString &label, const QString &button)>;

/// The dialog of a job that loads a file, or saves one.
[[nodiscard]] std::unique_ptr<JobDialog> makeJobDialog(const JobDialogFactory &dialogs, bool isLoad);

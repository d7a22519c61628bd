#include "app/ProgressJobDialog.h"

#include "controls/MyProgressDlg.h"

namespace {

/// MyProgressDlg as a file job sees it.
class ProgressJobDialog : public JobDialog {
public:
    ProgressJobDialog(const QString &title, const QString &label, const QString &button, QWidget *parent)
        : m_dialog(title, label, button, parent)
    {
        m_dialog.autoAccept = true;
    }

    void setProgress(int percent) override { m_dialog.setProgress(percent); }
    [[nodiscard]] bool exec() override { return m_dialog.exec() == QDialog::Accepted; }

private:
    MyProgressDlg m_dialog;
};

} // namespace

JobDialogFactory progressJobDialogs(QWidget *parent)
{
    return [parent](const QString &title, const QString &label, const QString &button) -> std::unique_ptr<JobDialog> {
        return std::make_unique<ProgressJobDialog>(title, label, button, parent);
    };
}

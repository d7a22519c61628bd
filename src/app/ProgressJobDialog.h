#pragma once

#include "files/JobDialog.h"

class QWidget;

/// Progress dialogs of the program's own look for long file jobs. `parent` must outlive the factory. Main thread.
[[nodiscard]] JobDialogFactory progressJobDialogs(QWidget *parent);

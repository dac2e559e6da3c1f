#pragma once

#include <QMessageBox>

/// Shows a warning, or for any other `icon` an information, over the window in
/// front, and returns when it is answered. Everything else goes on meanwhile.
void show_message_box(QMessageBox::Icon icon, const QString& title, const QString& text);

#pragma once

#include <QString>

class stage;

// Steps of the tour through what leaves the program. Files and pictures go to
// `folder`; `language` ("zh" or "en") ends the names of the pictures.

/// Saves map and drawing through the export dialog and compares them with what
/// the window shows.
void save_pictures(const stage& at, const QString& folder, const QString& language);
/// Looks at page and preview, and prints into a PDF file.
void print_the_drawing(const stage& at, const QString& folder, const QString& language);
/// Looks for a new version, where no update host is configured.
void look_for_a_new_version(const stage& at, const QString& language);
/// Sends a firmware image to the simulated instrument that is plugged in, which keeps
/// it as FOLDER/../firmware.
void upgrade_firmware(const stage& at, const QString& folder, const QString& language);

#pragma once

#include <QString>

/// Boxes of export and import. They stand over the window in front, return when
/// they are answered, and show the ordinary pointer although the work around
/// them shows the waiting one.
void show_information(const QString& title, const QString& text);
void show_warning(const QString& title, const QString& text);

/// Shows the waiting pointer for as long as it lives.
class wait_pointer
{
public:
    wait_pointer();
    ~wait_pointer();
    wait_pointer(const wait_pointer&) = delete;
    wait_pointer& operator=(const wait_pointer&) = delete;
};

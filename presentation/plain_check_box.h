#pragma once

#include <QCheckBox>

/// A check box without a text that looks like the ticks of the tables: drawn by
/// the application's style, whatever style sheet its panel has.
class plain_check_box : public QCheckBox
{
    Q_OBJECT

public:
    using QCheckBox::QCheckBox;

protected:
    void paintEvent(QPaintEvent* event) override;
};

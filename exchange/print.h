#pragma once

#include <QWidget>

class QPrinter;
class QPushButton;
class QTextEdit;

/// A page of rich text with the picture of a widget in it, which can be typed on
/// and printed, with or without a preview. Its texts are Chinese in both
/// languages.
class print : public QWidget
{
    Q_OBJECT

public:
    explicit print(QWidget* parent = nullptr);

    QTextEdit* textEdit;
    QPushButton* pushButton_print;
    QPushButton* pushButton_view;

    /// Appends the picture of `widget` to the page, scaled down to the page's
    /// width where it is wider.
    void add_print_image(QWidget* widget);

public slots:
    void on_pushButton_print_clicked();
    void on_pushButton_view_clicked();
};

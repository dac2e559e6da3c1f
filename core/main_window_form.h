#pragma once

#include <QtCore/qglobal.h>

class QAction;
class QCheckBox;
class QFrame;
class QGroupBox;
class QLabel;
class QMainWindow;
class QMenu;
class QMenuBar;
class QProgressBar;
class QPushButton;
class QSize;
class QString;
class QTabWidget;
class QTableView;
class QWebEngineView;
class QWidget;
class graphic_widget;

namespace Ui {

/// The form of the main window, built by code with absolute positions. Members
/// are named after their objects.
class MainWindow
{
public:
    QWidget* centralWidget;

    QWidget* widget1;
    QPushButton* data_read;
    QPushButton* data_to_device;
    QPushButton* data_output_file;
    QPushButton* data_input_file;

    QWidget* widget3;
    QLabel* label_tablist;
    QPushButton* delect_tableandmap;
    QTabWidget* tabWidget;
    QWidget *tab, *tab_2, *tab_3, *tab_4, *tab_5, *tab_6, *tab_7;
    QTableView *alltableView, *areatableView, *distableView, *pointtableView, *linetableView,
        *tracktableView, *fangyangtableView;
    QCheckBox *checkBox, *checkBox_mianji, *checkBox_juli, *checkBox_hangdian, *checkBox_hangxian,
        *checkBox_hangji, *checkBox_fangyang;

    QWidget* widget4;
    QLabel* label_2;
    QProgressBar* progressBar;
    QLabel* progressLabel;

    QGroupBox* groupBox;
    QLabel *label_total, *totalchecked, *label_total_unit;
    QLabel *label_area, *areameter, *label_area_unit, *areamu, *label_mu_unit;
    QLabel *label_dist, *distmeter, *label_dist_unit;
    QPushButton* marlund;

    QWidget* widget2;
    QPushButton *pushButton_map, *pushButton_graph;
    QLabel *label_8, *label_serial, *LED, *LED_2, *label_20, *label_11, *label_point, *label_tiao,
        *label_10, *label_13;
    QPushButton *print, *softwareupgrade, *hardwareupgrade;

    QWebEngineView* map;
    graphic_widget* widget_graphic;
    QPushButton* north;
    QFrame* frame;
    QLabel *label_frame, *label_14, *label_15, *label_16, *label_17, *label_24, *label_18,
        *label_25, *label_19, *label_21, *label_26, *label_22;
    QPushButton* tuxing_control;

    QMenuBar* menuBar;
    QMenu *menu_file, *menu_setting, *menu_mu, *menu_map, *menu_help, *menu_language;
    QAction *action_export_graphics, *action_export, *action_quit;
    QAction *action_small_mu, *action_coordinate;
    QAction *action_gaode, *action_google, *action_sky;
    QAction *action_instructions, *action_about, *action_download, *action_software;
    QAction *action_chinese, *action_english;

    /// Makes all widgets and menus at their places, without texts' other
    /// language, and connects slots by name.
    void setupUi(QMainWindow* window);
    /// Sets every text that passes through `tr`, tooltips and accessible names
    /// among them. Menu titles and actions are set once by setupUi: a language
    /// switch sets them literally.
    void retranslateUi(QMainWindow* window);
    /// Sets the text of a label whose place is narrow, in a smaller font where it
    /// would be cut off, and as its tooltip.
    static void set_fitting(QLabel* label, const QString& text);
    /// Moves and stretches what follows the window's new size. Horizontal places
    /// follow above 1295 pixels only, vertical ones above 724.
    void resize_with(const QSize& window_size);

private:
    void make_actions_panel();
    void make_tables_panel();
    void make_progress_row();
    void make_totals_box();
    void make_top_bar();
    void make_views();
    void make_menus(QMainWindow* window);
};

} // namespace Ui

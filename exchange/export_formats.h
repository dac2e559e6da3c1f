#pragma once

#include <QtGlobal>

#include <array>

/// Commands of file_export_thread::export_file. 2 is not used: pictures have a
/// signal of their own.
enum export_command
{
    export_nothing = 0, ///< the picture, which does not go through export_file
    export_kml = 1,
    export_one_csv = 3,
    export_more_csv = 4,
    export_one_dxf = 5,
    export_more_dxf = 6,
    export_one_gpx = 7,
    export_more_gpx = 8,
    export_excel = 9,
};

/// One choice of the export dialog.
struct export_format
{
    const char* chinese;
    const char* english;
    export_command command;
    const char* label;        ///< what the log calls it
    const char* default_path; ///< where the path dialog starts; it falls back by itself
    const char* filter;       ///< of the path dialog; null: a folder, one file for each record
};

/// The choices, in the order of the dialog's list.
inline constexpr std::array<export_format, 9> export_formats{{
    {"合并为CSV文件", "Merge into CSV files", export_one_csv, "one_csv_export",
     "/home/user/Documents/exported_data.csv",
     QT_TRANSLATE_NOOP("outputWindow", "CSV Files (*.csv);;All Files (*)")},
    {"多个CSV文件", "Multiple CSV files", export_more_csv, "more_csv_export",
     "/home/user/Documents", nullptr},
    {"合并为DXF文件", "Merge into DXF files", export_one_dxf, "one_dxf_export",
     "/home/user/Documents/exported_data.dxf",
     QT_TRANSLATE_NOOP("outputWindow", "DXF Files (*.dxf);;All Files (*)")},
    {"多个DXF文件", "Multiple DXF files", export_more_dxf, "more_dxf_export",
     "/home/user/Documents", nullptr},
    {"合并为GPX文件", "Merge into GPX files", export_one_gpx, "one_gpx_export",
     "/home/user/Documents/exported_data.gpx",
     QT_TRANSLATE_NOOP("outputWindow", "GPX Files (*.gpx);;All Files (*)")},
    {"多个GPX文件", "Multiple GPX files", export_more_gpx, "more_gpx_export",
     "/home/user/Documents", nullptr},
    {"KML文件", "Export KML files", export_kml, "kml_export",
     "/home/user/Documents/exported_data.kml",
     QT_TRANSLATE_NOOP("outputWindow", "KML Files (*.kml);;All Files (*)")},
    {"图片", "Export Picture", export_nothing, "picture_export",
     "/home/user/Documents/exported_data.png",
     QT_TRANSLATE_NOOP("outputWindow", "PNG Files (*.png);;All Files (*)")},
    {"Excel文件", "Export Excel files", export_excel, "excel_export",
     "/home/user/Documents/exported_data.xlsx",
     QT_TRANSLATE_NOOP("outputWindow", "Xlsx Files (*.xlsx);;All Files (*)")},
}};

/// The same choices by name.
enum format_index
{
    one_csv_format,
    more_csv_format,
    one_dxf_format,
    more_dxf_format,
    one_gpx_format,
    more_gpx_format,
    kml_format,
    picture_format,
    excel_format,
};

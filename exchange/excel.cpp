#include "exchange/file_export_thread.h"
#include "exchange/file_import_thread.h"
#include "exchange/message_boxes.h"

void file_export_thread::excel_export(int /*mode*/, model_param /*m_ModelParam*/, QString file_path)
{
    if (!file_path.isEmpty())
        show_not_available(QStringLiteral("Excel"));
}

void file_import_thread::import_excel(const QString& /*path*/)
{
    show_not_available(QStringLiteral("Excel"));
}

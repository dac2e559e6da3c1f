#include "coordinates/json_file_manager.h"

#include <QDebug>

JsonFileManager::JsonFileManager(QObject* parent) : QObject(parent)
{
    qInfo() << "the store of coordinate systems is not there yet";
}

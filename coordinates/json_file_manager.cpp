#include "coordinates/json_file_manager.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QStandardPaths>

namespace {

/// A number of a record under its name in the file.
template <class Record>
struct json_member
{
    const char* key;
    double Record::*number = nullptr;
    int Record::*integer = nullptr; ///< instead of number
};

using system_member = json_member<CoordinateSystem>;

constexpr system_member axes_members[] = {
    {"changzhou", &CoordinateSystem::changzhou},
    {"duanzhou", &CoordinateSystem::duanzhou},
    {"pianlv", &CoordinateSystem::pianlv},
};

constexpr system_member projection_members[] = {
    {"utm_mode", nullptr, &CoordinateSystem::utm_mode},
    {"method", nullptr, &CoordinateSystem::method},
    {"k0", &CoordinateSystem::k0},
    {"east", &CoordinateSystem::east},
    {"north", &CoordinateSystem::north},
    {"tall", &CoordinateSystem::tall},
    {"l0", &CoordinateSystem::l0},
};

constexpr json_member<seven_parameters> seven_members[] = {
    {"dx", &seven_parameters::dx}, {"dy", &seven_parameters::dy}, {"dz", &seven_parameters::dz},
    {"rx", &seven_parameters::rx}, {"ry", &seven_parameters::ry}, {"rz", &seven_parameters::rz},
    {"k", &seven_parameters::k},
};

constexpr json_member<four_parameters> four_members[] = {
    {"dx", &four_parameters::dx},
    {"dy", &four_parameters::dy},
    {"k", &four_parameters::k},
    {"rt", &four_parameters::rt},
};

/// Reads a group of the file into the record, if it is there and an object.
template <class Record, std::size_t size>
void read_group(const QJsonValue& group, const json_member<Record> (&members)[size], Record& record)
{
    if (!group.isObject())
        return;
    const QJsonObject object = group.toObject();
    for (const json_member<Record>& member : members) {
        const QJsonValue value = object.value(QLatin1String(member.key));
        if (member.integer != nullptr)
            record.*member.integer = value.toInt(0);
        else
            record.*member.number = value.toDouble(0.0);
    }
}

template <class Record, std::size_t size>
QJsonObject group_of(const Record& record, const json_member<Record> (&members)[size])
{
    QJsonObject group;
    for (const json_member<Record>& member : members) {
        group[QLatin1String(member.key)] = member.integer != nullptr
                                               ? QJsonValue(record.*member.integer)
                                               : QJsonValue(record.*member.number);
    }
    return group;
}

/// The flattenings are rounded on purpose and not the quotients of the axes.
struct built_in
{
    const char* name;
    double changzhou, duanzhou, pianlv;
    int ellipsoid;
};
constexpr built_in built_in_systems[] = {
    {"BEIJING1954", 6378245.0, 6356863.018773047, 0.00335233, 0},
    {"XIAN1980", 6378140.0, 6356755.288157528, 0.003352813, 1},
    {"WGS1984", wgs84_a, wgs84_b, 0.003352811, 2},
    {"CGCS2000", 6378137.0, 6356752.314140355, 0.003352811, 3},
};

/// In bytes. More is a foreign file, whose reading would only fill the memory.
constexpr qint64 largest_file = qint64{64} * 1024 * 1024;

/// Whether something else than a file or a folder lies there: opening a pipe or
/// reading a device may take for ever.
bool would_wait(const QFile& file)
{
    const QFileInfo info(file);
    return info.exists() && !info.isFile() && !info.isDir();
}

QDir store_folder()
{
#ifdef Q_OS_WIN
    return QDir(QStringLiteral("C:/Velmo"));
#else
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                QStringLiteral("/Velmo"));
#endif
}

} // namespace

JsonFileManager::JsonFileManager(QObject* parent) : QObject(parent)
{
    initJsonFile(QStringLiteral("coordinate_system.json"));
}

bool JsonFileManager::initJsonFile(const QString& file_name)
{
    const QDir folder = store_folder();
    if (!folder.exists()) {
        if (folder.mkpath(QStringLiteral(".")))
            qDebug() << "成功创建目录:" << folder.path();
        else
            qDebug() << "创建目录失败:" << folder.path();
    }
    file_path = folder.filePath(file_name);
    qDebug() << "JSON文件路径:" << file_path;

    if (QFile::exists(file_path)) {
        qDebug() << "JSON文件已存在，正在读取所有坐标系统...";
        const bool loaded = readAllCoordinateSystems();
        if (loaded)
            qDebug() << "成功读取" << systems.size() << "个坐标系统到内存";
        else
            qWarning() << "读取坐标系统失败";
        return loaded;
    }

    qDebug() << "JSON文件不存在，正在创建...";
    if (!writeJsonFile(createDefaultCoordinateSystems())) {
        qDebug() << "创建JSON文件失败";
        return false;
    }
    qDebug() << "默认JSON文件创建成功";
    const bool loaded = readAllCoordinateSystems();
    if (loaded)
        qDebug() << "成功加载默认坐标系统到内存";
    else
        qWarning() << "加载默认坐标系统失败";
    return loaded;
}

bool JsonFileManager::readAllCoordinateSystems()
{
    systems.clear();
    const QJsonObject json = readJsonFile();
    if (json.isEmpty()) {
        qWarning() << "JSON文件为空或读取失败";
        return false;
    }
    for (auto member = json.begin(); member != json.end(); ++member)
        systems.append(parseCoordinateSystem(member.key(), member.value().toObject()));
    qDebug() << "从文件加载了" << systems.size() << "个坐标系统";
    return !systems.isEmpty();
}

CoordinateSystem JsonFileManager::parseCoordinateSystem(const QString& name,
                                                        const QJsonObject& json) const
{
    CoordinateSystem system;
    system.name = name;
    const QJsonObject param = json.value(QStringLiteral("model_param")).toObject();
    read_group(param.value(QStringLiteral("ellip_para")), axes_members, system);
    system.type = param.value(QStringLiteral("type")).toInt(0);
    system.ellipsoid = param.value(QStringLiteral("ellipsoid")).toInt(0);
    read_group(param.value(QStringLiteral("gauss_param")), projection_members, system);
    read_group(param.value(QStringLiteral("param7")), seven_members, system.param7);
    read_group(param.value(QStringLiteral("param4")), four_members, system.param4);
    return system;
}

QJsonObject JsonFileManager::coordinateSystemToJson(const CoordinateSystem& system) const
{
    const QJsonObject param{
        {QStringLiteral("ellip_para"), group_of(system, axes_members)},
        {QStringLiteral("type"), system.type},
        {QStringLiteral("ellipsoid"), system.ellipsoid},
        {QStringLiteral("gauss_param"), group_of(system, projection_members)},
        {QStringLiteral("param7"), group_of(system.param7, seven_members)},
        {QStringLiteral("param4"), group_of(system.param4, four_members)},
    };
    return {{QStringLiteral("model_param"), param}};
}

QJsonObject JsonFileManager::createDefaultCoordinateSystems() const
{
    QJsonObject json;
    for (const built_in& one : built_in_systems) {
        CoordinateSystem system;
        system.name = QString::fromLatin1(one.name);
        system.changzhou = one.changzhou;
        system.duanzhou = one.duanzhou;
        system.pianlv = one.pianlv;
        system.ellipsoid = one.ellipsoid;
        json[system.name] = coordinateSystemToJson(system);
    }
    return json;
}

QJsonObject JsonFileManager::readJsonFile() const
{
    QFile file(file_path);
    if (!file.exists()) {
        qWarning() << "文件不存在，无法读取";
        return {};
    }
    if (would_wait(file)) {
        qWarning() << "无法打开文件进行读取:"
                   << "not a regular file";
        return {};
    }
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qWarning() << "无法打开文件进行读取:" << file.errorString();
        return {};
    }
    QJsonParseError error;
    QJsonDocument document;
    if (file.size() > largest_file)
        error.error = QJsonParseError::DocumentTooLarge;
    else
        document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError) {
        qWarning() << "JSON解析错误:" << error.errorString();
        return {};
    }
    return document.object();
}

bool JsonFileManager::writeJsonFile(const QJsonObject& json) const
{
    const QDir folder = QFileInfo(file_path).dir();
    if (!folder.exists() && !folder.mkpath(QStringLiteral("."))) {
        qWarning() << "无法创建目录";
        return false;
    }
    QFile file(file_path);
    if (would_wait(file)) {
        qWarning() << "无法打开文件进行写入:"
                   << "not a regular file";
        return false;
    }
    // Unbuffered: a full disk is told by the write and not, unheard, by the close.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text |
                   QIODevice::Unbuffered)) {
        qWarning() << "无法打开文件进行写入:" << file.errorString();
        return false;
    }
    const QByteArray content = QJsonDocument(json).toJson();
    const qint64 written = file.write(content);
    file.close();
    if (written != content.size()) {
        qWarning() << "写入文件失败";
        return false;
    }
    qDebug() << "JSON文件写入成功，写入" << written << "字节";
    return true;
}

CoordinateSystem JsonFileManager::getCoordinateSystem(const QString& name) const
{
    const qsizetype index = indexOf(name);
    if (index >= 0)
        return systems[index];
    qWarning() << "坐标系统" << name << "不存在";
    return {};
}

bool JsonFileManager::addCoordinateSystem(const CoordinateSystem& system)
{
    if (system.name.isEmpty()) {
        qWarning() << "坐标系统名称为空";
        return false;
    }
    if (indexOf(system.name) >= 0) {
        qWarning() << "坐标系统" << system.name << "已存在";
        return false;
    }
    systems.append(system);
    return rewrite();
}

bool JsonFileManager::updateCoordinateSystem(const CoordinateSystem& system)
{
    if (system.name.isEmpty()) {
        qWarning() << "坐标系统名称为空";
        return false;
    }
    const qsizetype index = indexOf(system.name);
    if (index < 0) {
        qWarning() << "坐标系统" << system.name << "不存在，无法更新";
        return false;
    }
    systems[index] = CoordinateSystem(system); // system may be that very element
    return rewrite();
}

bool JsonFileManager::deleteCoordinateSystem(const QString& name)
{
    const qsizetype index = indexOf(name);
    if (index < 0) {
        qWarning() << "坐标系统" << name << "不存在";
        return false;
    }
    systems.removeAt(index);
    return rewrite();
}

qsizetype JsonFileManager::indexOf(const QString& name) const
{
    for (qsizetype index = 0; index < systems.size(); ++index) {
        if (systems[index].name == name)
            return index;
    }
    return -1;
}

bool JsonFileManager::rewrite() const
{
    QJsonObject json;
    for (const CoordinateSystem& system : systems)
        json[system.name] = coordinateSystemToJson(system);
    return writeJsonFile(json);
}

#pragma once

#include <QHostAddress>
#include <QList>
#include <QString>
#include <QWidget>

#include <array>

class JsonFileManager;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class QTimer;
class QUdpSocket;

/// One point in both frames, as texts: first the three values of the source, then
/// those of the target; B, L (decimal degrees) and H (metres), or X, Y, Z (metres).
struct PointGroup
{
    std::array<QString, 6> values;
};

/// Has seven parameters computed from pairs of points by a calculation server.
///
/// Request and reply are one UDP datagram of UTF-8 text each. The request is
///
///     $PORT,COUNT,X,Y,Z,...,X,Y,Z,...,*
///
/// our port, the number of pairs, all source points, then all target points, in
/// metres. The reply is dx,dy,dz,rx,ry,rz,k between one character on each side:
/// metres, arc-seconds, scale difference.
class seven_parameter : public QWidget
{
    Q_OBJECT
    Q_MOC_INCLUDE("coordinates/json_file_manager.h")

public:
    explicit seven_parameter(QWidget* parent = nullptr);

    QList<PointGroup> groups;
    QHostAddress server_address;
    quint16 server_port = 6020;

signals:
    /// The reply's texts as they came, when the person wants them.
    void send_seven_parameter(QString dx, QString dy, QString dz, QString rx, QString ry,
                              QString rz, QString k);

public slots:
    void set_up(int language, JsonFileManager* js);
    void on_pushButton_clicked();   ///< calculate
    void on_pushButton_2_clicked(); ///< delete the current group
    void on_pushButton_3_clicked(); ///< add a group
    void on_pushButton_4_clicked(); ///< store the fields in the current group

private:
    /// How a geodetic point's angles are written.
    enum angle_format
    {
        degrees,
        degrees_minutes,
        degrees_minutes_seconds
    };

    /// The widgets of the source or of the target.
    struct side
    {
        QLabel* heading;
        QRadioButton* geodetic;
        QRadioButton* cartesian;
        QComboBox* angle;
        QLabel* ellipsoid_label;
        QComboBox* ellipsoid;
        std::array<QLabel*, 3> names;
        std::array<QLineEdit*, 3> fields;

        [[nodiscard]] angle_format format() const;
    };
    using side_names = std::array<const char*, 12>;

    static side make_side(QWidget* parent, const side_names& names);
    void follow_form(const side& one);
    void describe_fields(const side& one);
    void enable_choices(bool enabled);
    void enable_fields(bool enabled);
    void renumber();
    void show_current();
    void show_values(const side& one, const QString* values);
    [[nodiscard]] QString points_of(size_t which_side) const;
    [[nodiscard]] QString words(const char* chinese, const char* english) const;
    void read_replies();
    void handle_reply(const QString& reply);
    void tell_time_out();

    QUdpSocket* m_socket;
    QTimer* m_timeout;
    qint32 m_language = 0; ///< 0 Chinese, any other English
    JsonFileManager* m_js = nullptr;
    QTimer* m_poll;
    int m_shown_row = -1;

    std::array<side, 2> m_sides; ///< source, target
    QListWidget* listWidget;
    QPushButton* pushButton;
    QPushButton* pushButton_2;
    QPushButton* pushButton_3;
    QPushButton* pushButton_4;
};

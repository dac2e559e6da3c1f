#include "device/serial_thread.h"

#include <QTest>

#include <map>
#include <string>
#include <vector>

// The machine's list of devices, in the place of libudev's: a test machine has no
// serial adapter to plug in and out. Only what QSerialPortInfo asks is there.

namespace {

struct device
{
    std::string path, name;
    std::map<std::string, std::string> properties;
    bool has_parent;
};
std::vector<device> devices;
std::string subsystem; // that was asked for

} // namespace

struct udev
{
};
struct udev_enumerate
{
};
struct udev_list_entry;
struct udev_device;

extern "C" {
udev* udev_new()
{
    static udev one;
    return &one;
}
udev* udev_unref(udev* /*one*/)
{
    return nullptr;
}
udev_enumerate* udev_enumerate_new(udev* /*one*/)
{
    static udev_enumerate one;
    return &one;
}
udev_enumerate* udev_enumerate_unref(udev_enumerate* /*one*/)
{
    return nullptr;
}
int udev_enumerate_add_match_subsystem(udev_enumerate* /*one*/, const char* name)
{
    subsystem = name;
    return 0;
}
int udev_enumerate_scan_devices(udev_enumerate* /*one*/)
{
    return 0;
}
// An entry and a device are both the device; its parent is itself.
udev_list_entry* udev_enumerate_get_list_entry(udev_enumerate* /*one*/)
{
    return devices.empty() ? nullptr : reinterpret_cast<udev_list_entry*>(devices.data());
}
udev_list_entry* udev_list_entry_get_next(udev_list_entry* entry)
{
    device* const next = reinterpret_cast<device*>(entry) + 1;
    return next == devices.data() + devices.size() ? nullptr
                                                   : reinterpret_cast<udev_list_entry*>(next);
}
const char* udev_list_entry_get_name(udev_list_entry* entry)
{
    return reinterpret_cast<device*>(entry)->path.c_str();
}
udev_device* udev_device_new_from_syspath(udev* /*one*/, const char* path)
{
    for (device& one : devices) {
        if (one.path == path)
            return reinterpret_cast<udev_device*>(&one);
    }
    return nullptr;
}
udev_device* udev_device_unref(udev_device* /*one*/)
{
    return nullptr;
}
udev_device* udev_device_get_parent(udev_device* one)
{
    return reinterpret_cast<device*>(one)->has_parent ? one : nullptr;
}
const char* udev_device_get_devnode(udev_device* one)
{
    return reinterpret_cast<device*>(one)->path.c_str();
}
const char* udev_device_get_sysname(udev_device* one)
{
    return reinterpret_cast<device*>(one)->name.c_str();
}
const char* udev_device_get_driver(udev_device* /*one*/)
{
    return "ch341-uart";
}
const char* udev_device_get_property_value(udev_device* one, const char* key)
{
    const auto& properties = reinterpret_cast<device*>(one)->properties;
    const auto found = properties.find(key);
    return found == properties.end() ? nullptr : found->second.c_str();
}
}

/// The ports that the program sees by itself: those that the machine lists.
class test_port_list : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void what_the_machine_lists();
};

void test_port_list::initTestCase()
{
    qputenv("PATH", ""); // no adb in this test
}

void test_port_list::what_the_machine_lists()
{
    devices = {
        {"/dev/ttyS7", "ttyS7", {{"ID_MODEL", "Onboard"}}, true},
        {"/dev/tty1", "tty1", {}, false}, // a console, no serial port
        {"/dev/ttyUSB3",
         "ttyUSB3",
         {{"ID_MODEL", "USB2.0-Serial"}, {"ID_VENDOR_ID", "1a86"}, {"ID_MODEL_ID", "7523"}},
         true},
    };
    const serial_thread reader;
    const QList<serial_thread::listed_port> ports = reader.available_ports();
    QCOMPARE(subsystem, std::string("tty"));
    QCOMPARE(ports.size(), 2);
    QCOMPARE(ports[0].description, QStringLiteral("Onboard"));
    QCOMPARE(ports[1].system_location, QStringLiteral("/dev/ttyUSB3"));
    QCOMPARE(ports[1].name, QStringLiteral("ttyUSB3"));
    QCOMPARE(ports[1].description, QStringLiteral("USB2.0-Serial"));
}

QTEST_GUILESS_MAIN(test_port_list)
#include "test_port_list.moc"

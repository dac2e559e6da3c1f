#pragma once

class MainWindow;
class data_to_device;
class file_export_thread;
class file_import_thread;
class hardware_upgrade;
class serial_thread;
class software_upgrade;
class thread_key;

/// The objects that live from start to exit. They are joined in a star: nothing
/// talks to a worker except through the hub, but for the one serial port and the
/// current Android channel, which go round it.
struct application_objects
{
    thread_key* key;
    MainWindow* window;
    serial_thread* serial;
    file_import_thread* import;
    file_export_thread* exporter;
    data_to_device* upload;
    software_upgrade* software;
    hardware_upgrade* firmware;
};

/// Installs the default font of the application.
void install_default_font();

/// Makes the long-lived objects in their order, joins them with 54 connections
/// and starts each worker. Nothing deletes them before the process ends; a test
/// may.
[[nodiscard]] application_objects make_application_objects();

/// The whole program: high-density rounding, application, font, objects, the
/// window shown, the event loop. Returns the exit code.
int run_application(int argc, char* argv[]);

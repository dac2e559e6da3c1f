#include <QFile>
#include <QTemporaryDir>

namespace {

/// Gives each test process, and what it starts, a data folder of its own under
/// which the program's store lies: no test reads or changes what a person keeps,
/// and tests that run side by side share nothing. QStandardPaths' test mode would
/// do the first only, its folder being one for all.
class private_data_folder
{
public:
    private_data_folder() { qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder.path())); }

private:
    QTemporaryDir m_folder;
};

const private_data_folder folder;

} // namespace

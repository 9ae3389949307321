#pragma once

#include <QFileDevice>
#include <QString>

#include <memory>

class QSaveFile;

namespace scnstore {

/// Where a command writes to: a file that appears, or replaces another, when it is whole, or the
/// standard output for "-". Devices and pipes are written as they are.
class OutputFile
{
public:
    explicit OutputFile(const QString& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    bool isStandardOutput() const;

    /// Opens it to be written. False, with failure(), if it cannot be.
    bool open();

    QFileDevice& device() { return *m_device; }

    /// Brings what was written to its place. False, with failure(), if not all of it got there. Without
    /// this, a file leaves nothing.
    bool finish();

    /// What the system says.
    QString failure() const;

private:
    QString m_path;
    QSaveFile* m_whole = nullptr; ///< The device, if it appears only when it is whole.
    std::unique_ptr<QFileDevice> m_device;
};

} // namespace scnstore

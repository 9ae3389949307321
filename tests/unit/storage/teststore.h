#pragma once

#include "storage/curvedatadb.h"

#include <QTemporaryDir>

#include <memory>

/// Sets the store's present time, which then stands still.
void setPresent(qint64 timestamp);

/// Moves the store's present time on.
void advancePresent(qint64 milliseconds);

/// Sets the time zone of the process while it lives.
class ZoneGuard
{
public:
    explicit ZoneGuard(const char* zone);
    ~ZoneGuard();
    ZoneGuard(const ZoneGuard&) = delete;
    ZoneGuard& operator=(const ZoneGuard&) = delete;

private:
    QByteArray m_previous;
    bool m_wasSet;
};

/// A store in a directory of its own, closed at the end without the waits of a running program.
class TestStore
{
public:
    TestStore();
    ~TestStore();
    TestStore(const TestStore&) = delete;
    TestStore& operator=(const TestStore&) = delete;

    CurveDataDB* operator->() { return m_store.get(); }
    CurveDataDB* get() { return m_store.get(); }

    /// Closes the store and makes a new one on the same directory.
    void restart();

    QString directory() const { return m_directory; }

    /// Path of a day file by its key.
    QString path(const char* dateKey) const;

private:
    QTemporaryDir m_parent;
    QString m_directory;
    std::unique_ptr<CurveDataDB> m_store;
};

#pragma once

#include "storage/curvedatadb.h"

#include <QTemporaryDir>

#include <memory>

/// Sets the store's current time, which then stands still.
void setPresent(qint64 timestamp);

/// Advances the store's current time.
void advancePresent(qint64 milliseconds);

/// Sets the process's time zone.
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

/// A store in its own directory, closed at the end without a running program's waits.
class TestStore
{
public:
    TestStore();
    ~TestStore();
    TestStore(const TestStore&) = delete;
    TestStore& operator=(const TestStore&) = delete;

    CurveDataDB* operator->() { return m_store.get(); }
    CurveDataDB* get() { return m_store.get(); }

    /// Closes the store and opens a new one on the same directory.
    void restart();

    QString directory() const { return m_directory; }

    /// Path of a day file by its key.
    QString path(const char* dateKey) const;

private:
    QTemporaryDir m_parent;
    QString m_directory;
    std::unique_ptr<CurveDataDB> m_store;
};

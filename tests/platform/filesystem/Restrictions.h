#pragma once

#include <QtGlobal>

namespace vandrel::test {

/// Rights mean nothing to root, so that tests of refused rights are run under another effective user while this exists.
class AsOrdinaryUser
{
public:
    AsOrdinaryUser();
    ~AsOrdinaryUser();
    AsOrdinaryUser(const AsOrdinaryUser &) = delete;
    AsOrdinaryUser &operator=(const AsOrdinaryUser &) = delete;

private:
    bool m_wasRoot;
};

/// While it exists, no file of this process may grow beyond a size: to a program that is what a full disk is.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(qint64 octets);
    ~FileSizeLimit();
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    void (*m_handler)(int);
    qint64 m_before;
};

/// While it exists, this process may take up no more than so many octets beyond what it has now. Nothing happens where
/// the sanitizers are, which take up far more than they use.
class MemoryCeiling
{
public:
    explicit MemoryCeiling(qint64 octets);
    ~MemoryCeiling();
    MemoryCeiling(const MemoryCeiling &) = delete;
    MemoryCeiling &operator=(const MemoryCeiling &) = delete;

private:
    qint64 m_before;
};

} // namespace vandrel::test

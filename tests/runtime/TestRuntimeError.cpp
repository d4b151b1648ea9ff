#include <new>
#include <stdexcept>

#include <QTest>

#include "runtime/ErrorReport.h"
#include "runtime/RuntimeError.h"

using namespace vandrel;

namespace {

template<typename Thrown>
RuntimeError failureOf(const Thrown &thrown)
{
    try {
        throw thrown;
    } catch (...) {
        return currentFailure();
    }
}

} // namespace

class TestRuntimeError : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void usualTexts_data();
    void usualTexts();
    void ownTextsStandForTheUsualOnes();
    void everyExceptionBecomesAFailure();
};

void TestRuntimeError::usualTexts_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("text");
    const QList<std::pair<int, QString>> rows{
        {5, u"Invalid procedure call or argument"_qs},
        {6, u"Overflow"_qs},
        {7, u"Out of memory"_qs},
        {9, u"Subscript out of range"_qs},
        {11, u"Division by zero"_qs},
        {13, u"Type mismatch"_qs},
        {51, u"Internal error"_qs},
        {52, u"Bad file name or number"_qs},
        {53, u"File not found"_qs},
        {55, u"File already open"_qs},
        {57, u"Device I/O error"_qs},
        {58, u"File already exists"_qs},
        {61, u"Disk full"_qs},
        {68, u"Device unavailable"_qs},
        {70, u"Permission denied"_qs},
        {71, u"Disk not ready"_qs},
        {75, u"Path/File access error"_qs},
        {76, u"Path not found"_qs},
        {91, u"Object variable or With block variable not set"_qs},
        {94, u"Invalid use of Null"_qs},
        {321, u"Invalid file format"_qs},
        {380, u"Invalid property value"_qs},
        {424, u"Object required"_qs},
        {429, u"Component can't create object"_qs},
        {438, u"Object doesn't support this property or method"_qs},
        {482, u"Printer error"_qs},
        {0, u"Application-defined or object-defined error"_qs},
        {-1, u"Application-defined or object-defined error"_qs},
        {1000, u"Application-defined or object-defined error"_qs},
    };
    for (const auto &[number, text] : rows)
        QTest::addRow("%d", number) << number << text;
}

void TestRuntimeError::usualTexts()
{
    QFETCH(const int, number);
    QFETCH(const QString, text);
    QCOMPARE(runtimeErrorText(number), text);
    const RuntimeError failure(number);
    QCOMPARE(failure.number(), number);
    QCOMPARE(failure.text(), text);
    QCOMPARE(QString::fromUtf8(failure.what()), text);
}

void TestRuntimeError::ownTextsStandForTheUsualOnes()
{
    const RuntimeError failure(error::FileNotFound, u"Grüße.rtf was not found."_qs);
    QCOMPARE(failure.number(), 53);
    QCOMPARE(failure.text(), u"Grüße.rtf was not found."_qs);
    QCOMPARE(QString::fromUtf8(failure.what()), failure.text());
}

void TestRuntimeError::everyExceptionBecomesAFailure()
{
    QCOMPARE(failureOf(RuntimeError(error::DiskFull)).number(), error::DiskFull);
    QCOMPARE(failureOf(std::bad_alloc()).number(), error::OutOfMemory);
    QCOMPARE(failureOf(std::bad_array_new_length()).number(), error::OutOfMemory);
    QCOMPARE(failureOf(std::runtime_error("broken")).number(), error::InternalError);
    QCOMPARE(failureOf(std::runtime_error("broken")).text(), u"Internal error: broken"_qs);
    QCOMPARE(failureOf(7).number(), error::InternalError);
    QCOMPARE(failureOf(7).text(), u"Internal error"_qs);
}

QTEST_APPLESS_MAIN(TestRuntimeError)
#include "TestRuntimeError.moc"

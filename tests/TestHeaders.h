#pragma once

// What most tests read of the standard library and the toolkit, in one piece that is compiled once. It spares no test
// its own includes.

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

// Opening a rich RTF of 10 MB and saving it again, beside other word processors converting the same file without
// a window. Every program runs as a process of its own, from its start to its end. The size in MB can be given.

#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include "BenchText.h"

using namespace vandrel;
using namespace vandrel::bench;

namespace {

constexpr int runs = 3;
constexpr int longestRun = 10 * 60 * 1000;

const QByteArray
    head("{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\froman\\fcharset0 Times New Roman;}"
         "{\\f1\\fswiss\\fcharset0 Arial;}{\\f2\\fmodern\\fcharset0 Courier New;}}"
         "{\\colortbl;\\red200\\green0\\blue0;\\red0\\green0\\blue200;\\red255\\green255\\blue0;}"
         "{\\stylesheet{\\s0 Normal;}{\\s1\\b\\fs32\\f1 heading 1;}}"
         "{\\*\\listtable{\\list{\\listlevel\\levelnfc0\\levelstartat1{\\leveltext\\'02\\'00.;}"
         "{\\levelnumbers\\'01;}\\fi-360\\li720}\\listid1}}"
         "{\\*\\listoverridetable{\\listoverride\\listid1\\listoverridecount0\\ls1}}\n");

// A paragraph of some 600 octets in which something changes every few words.
QByteArray paragraph(int number)
{
    static const char *const formats[]
        = {"\\b",      "\\i",     "\\ul",     "\\f1",         "\\f2\\fs20", "\\cf1",
           "\\cf2\\b", "\\super", "\\strike", "\\highlight3", "\\fs28",     "\\b\\i"};
    QByteArray rtf("\\pard\\plain ");
    rtf += number % 4 == 0 ? "\\qj\\sa120 "
        : number % 4 == 1  ? "\\li360\\fi-360\\tx720 "
                           : "\\sb60\\sl276\\slmult1 ";
    for (int i = 0; i < 12; ++i) {
        rtf += "The quick brown f\\'f6x no. " + QByteArray::number(number * 12 + i);
        rtf += " {" + QByteArray(formats[(number + i) % 12]) + " jumps over} \\u8222?the lazy dog\\u8220? ";
    }
    return rtf + "\\par\n";
}

QByteArray listOf(int number)
{
    QByteArray rtf;
    for (int i = 1; i <= 5; ++i) {
        rtf += "\\pard\\plain\\ls1\\fi-360\\li720{\\listtext " + QByteArray::number(i) + ".\\tab}item "
            + QByteArray::number(number) + "\\par\n";
    }
    return rtf;
}

QByteArray tableOf(int number)
{
    QByteArray rtf;
    for (int row = 0; row < 4; ++row) {
        rtf += "\\trowd\\trgaph108";
        for (int cell = 1; cell <= 3; ++cell)
            rtf += "\\clbrdrt\\brdrs\\clbrdrb\\brdrs\\cellx" + QByteArray::number(3000 * cell);
        for (int cell = 1; cell <= 3; ++cell)
            rtf += "\\pard\\plain\\intbl {\\b cell} " + QByteArray::number(number + cell) + "\\cell";
        rtf += "\\row\n";
    }
    return rtf;
}

QByteArray richText(qsizetype octets)
{
    QByteArray rtf = head;
    for (int i = 0; rtf.size() < octets; ++i) {
        if (i % 20 == 0)
            rtf += "\\pard\\plain\\s1\\b\\fs32\\f1 Chapter " + QByteArray::number(i / 20 + 1) + "\\par\n";
        rtf += paragraph(i);
        if (i % 25 == 24)
            rtf += listOf(i);
        if (i % 50 == 49)
            rtf += tableOf(i);
    }
    return rtf + "}\n";
}

// What a child process of this program does: the work of the peers.
int convert(const QString &from, const QString &to)
{
    const auto files = documentFiles();
    DocumentProgress progress;
    LoadedDocument loaded;
    const double reading = milliseconds([&] { loaded = files->load(from, progress); });
    const double writing = milliseconds([&] { files->save(to, *loaded.document, [] {}); });
    std::printf("    of which reading %.0f ms, writing %.0f ms\n", reading, writing);
    std::fflush(stdout);
    return 0;
}

// The median time of a program's runs in milliseconds; negative when it does not run or leaves no file.
double timeOf(const QString &program, const QStringList &arguments, const QString &result, int times)
{
    if (QStandardPaths::findExecutable(program).isEmpty())
        return -1;
    std::vector<double> measured;
    for (int i = 0; i < times; ++i) {
        QFile::remove(result);
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedOutputChannel);
        bool ended = false;
        measured.push_back(milliseconds([&] {
            process.start(program, arguments);
            ended = process.waitForFinished(longestRun);
        }));
        if (!ended || !QFile::exists(result))
            return -1;
    }
    return median(measured);
}

void compare(const char *peer, double ours, double theirs)
{
    if (theirs < 0)
        std::printf("%s: not here\n", peer);
    else
        report("opening and converting", ours, peer, theirs, 1);
}

int compareAll(const QString &self, int megabytes)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("rich.rtf"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(richText(megabytes * 1'000'000)) < 0)
        return 1;
    file.close();
    std::printf("a rich document of %lld octets\n", static_cast<long long>(QFileInfo(path).size()));
    const QString saved = folder.filePath(QStringLiteral("saved.rtf"));
    const double ours = timeOf(self, {QStringLiteral("--convert"), path, saved}, saved, runs);
    if (ours < 0)
        return 1;
    const QString profile
        = QStringLiteral("-env:UserInstallation=file://") + folder.filePath(QStringLiteral("profile"));
    const QString text = folder.filePath(QStringLiteral("rich.txt"));
    compare("LibreOffice", ours,
            timeOf(QStringLiteral("soffice"),
                   {profile, QStringLiteral("--headless"), QStringLiteral("--convert-to"),
                    QStringLiteral("odt"), QStringLiteral("--outdir"), folder.path(), path},
                   folder.filePath(QStringLiteral("rich.odt")), 1));
    compare("AbiWord", ours,
            timeOf(QStringLiteral("abiword"), {QStringLiteral("--to=txt"), QStringLiteral("-o"), text, path},
                   text, 1));
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.value(1) == QLatin1String("--convert") && arguments.size() == 4)
        return convert(arguments[2], arguments[3]);
    const int megabytes = arguments.value(1, QStringLiteral("10")).toInt();
    return megabytes > 0 ? compareAll(QGuiApplication::applicationFilePath(), megabytes) : 2;
}

#include "Support/ProgramRun.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace corv::test;

namespace {

ProgramRun vistrel(const QStringList& arguments)
{
    return runProgram(QStringLiteral(VISTREL_CLI), arguments);
}

QString textOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// The options that a text names.
QSet<QString> optionsIn(const QString& text)
{
    static const QRegularExpression option("--[a-z][a-z-]*");
    QSet<QString> options;
    auto each = option.globalMatch(text);
    while (each.hasNext())
        options << each.next().captured();
    return options;
}

QString listOf(QSet<QString> words)
{
    QStringList sorted = words.values();
    sorted.sort();
    return sorted.join(' ');
}

// A command as its help shows it.
struct CommandHelp
{
    QString usage;
    QMap<QString, QString> options; ///< name of the value by option
};

QStringList commandNames()
{
    QStringList names;
    for (const QString& line : QString::fromUtf8(vistrel({"--help"}).out).split('\n')) {
        static const QRegularExpression command("^  ([a-z][a-z-]+) ");
        const QString name = command.match(line).captured(1);
        if (!name.isEmpty())
            names << name;
    }
    return names;
}

CommandHelp helpOf(const QString& command)
{
    static QMap<QString, CommandHelp> known;
    if (known.contains(command))
        return known[command];
    CommandHelp& help = known[command];
    for (const QString& line : QString::fromUtf8(vistrel({command, "--help"}).out).split('\n')) {
        static const QRegularExpression option("^  (--[a-z-]+)(?: (\\S+))?  ");
        const auto match = option.match(line);
        if (line.startsWith("usage: "))
            help.usage = line;
        else if (match.hasMatch())
            help.options.insert(match.captured(1), match.captured(2));
    }
    return help;
}

const QSet<QString> common{"--help", "--verbose"};

} // namespace

/// Help, manual page, document, completion and behaviour of the tool say the same.
class ToolTextsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void usageNamesEveryOption_data() { addCommands(); }
    void usageNamesEveryOption();
    void documentHasTheUsage_data() { addCommands(); }
    void documentHasTheUsage();
    void manualPageHasEveryOption_data() { addCommands(); }
    void manualPageHasEveryOption();
    void manualPageHasAnExample_data() { addCommands(); }
    void manualPageHasAnExample();
    void textsNameNoOtherOptions();
    void optionsAreUnderstood_data() { addCommands(); }
    void optionsAreUnderstood();
    void examplesWorkAsTheyAreTyped_data();
    void examplesWorkAsTheyAreTyped();
    void keysOfTheDocumentAreInTheManualPage();
    void bashOffersCommandsOptionsAndFiles_data() { addCommands(); }
    void bashOffersCommandsOptionsAndFiles();
    void shellsTakeTheirScripts_data();
    void shellsTakeTheirScripts();
    void namesOfTheShellsAreOffered();
    void zshTakesItsScriptBySourceToo();
    void everyShellKnowsEveryOption_data() { addCommands(); }
    void everyShellKnowsEveryOption();

private:
    void addCommands() const;
    QStringList examplesOfThePage() const;
    QStringList bashOffers(const QStringList& words) const;
    QString script(const QString& shell) const { return m_folder.filePath("completion." + shell); }

    QTemporaryDir m_folder;
    QStringList m_commands;
    QString m_document;
    QString m_page; ///< without its markup
};

void ToolTextsTest::initTestCase()
{
    m_commands = commandNames();
    QVERIFY(m_commands.size() >= 10);
    m_document = textOf(VISTREL_DOCS "/cli.md");
    QString page = textOf(VISTREL_DOCS "/man/vistrel-cli.1.in");
    page.replace("\\\n", " ");
    page.remove(QRegularExpression("\\\\f[BIR]"));
    m_page = page.replace("\\-", "-");
    QVERIFY(!m_document.isEmpty() && !m_page.isEmpty());
    for (const QString shell : {"bash", "zsh", "fish"}) {
        const ProgramRun run = vistrel({"--completion", shell});
        QCOMPARE(run.status, 0);
        QFile file(script(shell));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(run.out);
    }
    QCOMPARE(vistrel({"--completion", "csh"}).status, 2);
    const ProgramRun card = runProgram(VISTREL_SAMPLE_FLIGHT, {m_folder.filePath("card")});
    QCOMPARE(card.status, 0);
}

QStringList ToolTextsTest::examplesOfThePage() const
{
    const QStringList lines = m_page.mid(m_page.indexOf("\n.SH EXAMPLES\n")).split('\n');
    QStringList examples;
    bool isExample = false;
    for (const QString& line : lines) {
        if (line == ".RS" || line == ".RE")
            isExample = line == ".RS";
        else if (isExample)
            examples << line;
    }
    return examples;
}

void ToolTextsTest::addCommands() const
{
    QTest::addColumn<QString>("command");
    for (const QString& command : m_commands)
        QTest::newRow(qPrintable(command)) << command;
}

void ToolTextsTest::usageNamesEveryOption()
{
    QFETCH(QString, command);
    const CommandHelp help = helpOf(command);
    const QStringList names = help.options.keys();
    QCOMPARE(listOf(optionsIn(help.usage) + common),
             listOf(QSet<QString>(names.begin(), names.end())));
}

void ToolTextsTest::documentHasTheUsage()
{
    QFETCH(QString, command);
    const int section = m_document.indexOf("\n## " + command + '\n');
    QVERIFY2(section >= 0, "no section");
    const QString usage = helpOf(command).usage.mid(7);
    QVERIFY2(m_document.mid(section).startsWith("\n## " + command + "\n\n    " + usage + '\n'),
             qPrintable(usage));
}

void ToolTextsTest::manualPageHasEveryOption()
{
    QFETCH(QString, command);
    const int start = m_page.indexOf("\n.TP\n" + command + ' ');
    QVERIFY2(start >= 0, "no section");
    int end = m_page.indexOf("\n.SH ", start);
    for (const QString& other : m_commands) {
        const int next = m_page.indexOf("\n.TP\n" + other + ' ', start + 1);
        if (next > start && next < end)
            end = next;
    }
    const QStringList names = helpOf(command).options.keys();
    QSet<QString> missing(names.begin(), names.end());
    missing -= optionsIn(m_page.mid(start, end - start)) + common;
    QCOMPARE(listOf(missing), QString());
}

void ToolTextsTest::manualPageHasAnExample()
{
    QFETCH(QString, command);
    const QStringList examples = examplesOfThePage().filter("vistrel-cli " + command + ' ');
    QVERIFY(!examples.isEmpty());
    for (const QString& example : examples) // those of the document are tried below
        QVERIFY2(m_document.contains("\n    $ " + example + '\n'), qPrintable(example));
}

void ToolTextsTest::textsNameNoOtherOptions()
{
    QSet<QString> known = common + QSet<QString>{"--version", "--completion"};
    for (const QString& command : m_commands) {
        const QStringList names = helpOf(command).options.keys();
        known += QSet<QString>(names.begin(), names.end());
    }
    QCOMPARE(listOf(optionsIn(m_page) - known), QString());
    QCOMPARE(listOf(optionsIn(m_document) - known), QString());
}

void ToolTextsTest::optionsAreUnderstood()
{
    QFETCH(QString, command);
    const CommandHelp help = helpOf(command);
    QStringList line{command};
    for (auto option = help.options.begin(); option != help.options.end(); ++option) {
        if (option.key() == "--help")
            continue;
        line << option.key();
        if (!option.value().isEmpty())
            line << "/nowhere/x";
    }
    const ProgramRun run = vistrel(line);
    QCOMPARE(run.status, 2); // nothing to work on
    QVERIFY2(!run.error.contains("nknown option") && !run.error.contains("Missing value"),
             run.error.constData());
    const ProgramRun unknown = vistrel({command, "--no-such-option"});
    QCOMPARE(unknown.status, 2);
    QVERIFY(unknown.error.contains("nknown option"));
}

void ToolTextsTest::examplesWorkAsTheyAreTyped_data()
{
    QTest::addColumn<QString>("example");
    QTest::addColumn<QStringList>("shown");
    const QStringList lines = m_document.split('\n');
    int examples = 0;
    for (int i = 0; i < lines.size(); ++i) {
        if (!lines[i].startsWith("    $ "))
            continue;
        QStringList shown;
        for (int j = i + 1; j < lines.size() && lines[j].startsWith("    "); ++j)
            shown << lines[j].mid(4);
        QTest::newRow(qPrintable(lines[i].mid(6))) << lines[i].mid(6) << shown;
        ++examples;
    }
    QVERIFY(examples >= m_commands.size());
}

void ToolTextsTest::examplesWorkAsTheyAreTyped()
{
    QFETCH(QString, example);
    QFETCH(QStringList, shown);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("PATH", QFileInfo(QStringLiteral(VISTREL_CLI)).path() + ':' +
                                   environment.value("PATH"));
    const ProgramRun run =
        runProgram("bash", {"-o", "pipefail", "-c", example}, environment, m_folder.path());
    QVERIFY2(run.status == 0, run.error.constData());
    const QString out = QString::fromUtf8(run.out).remove('\r');
    const QStringList lines = out.split('\n');
    for (const QString& line : shown) {
        const bool isCut = line.endsWith("...");
        const QString start = isCut ? line.chopped(3) : line;
        const bool isThere =
            isCut ? out.contains(start) : lines.contains(line) || line.trimmed().isEmpty();
        QVERIFY2(isThere, qPrintable("not printed: " + line));
    }
}

// Each key of a table of the document, in backticks at the start of a row.
void ToolTextsTest::keysOfTheDocumentAreInTheManualPage()
{
    QSet<QString> words;
    static const QRegularExpression word("[A-Za-z]+");
    auto each = word.globalMatch(m_page);
    while (each.hasNext())
        words << each.next().captured();
    for (const QString& line : m_document.split('\n')) {
        static const QRegularExpression row("^\\| (`[^|]*) \\|");
        static const QRegularExpression key("`([A-Za-z]+)");
        auto keys = key.globalMatch(row.match(line).captured(1));
        while (keys.hasNext()) {
            const QString name = keys.next().captured(1);
            QVERIFY2(words.contains(name), qPrintable(name));
        }
    }
}

// What a real bash would show for a line whose last word is being typed.
QStringList ToolTextsTest::bashOffers(const QStringList& words) const
{
    const QString program = "source '" + script("bash") +
                            "'; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _vistrel_cli; "
                            "printf '%s\\n' \"${COMPREPLY[@]}\"";
    const ProgramRun run = runProgram("bash", QStringList{"-c", program, "bash"} + words,
                                      QProcessEnvironment::systemEnvironment(), m_folder.path());
    return QString::fromUtf8(run.out).split('\n', Qt::SkipEmptyParts);
}

void ToolTextsTest::bashOffersCommandsOptionsAndFiles()
{
    QFETCH(QString, command);
    QVERIFY(bashOffers({"vistrel-cli", ""}).contains(command));
    QVERIFY(bashOffers({"vistrel-cli", "--verbose", command.left(2)}).contains(command));
    const CommandHelp help = helpOf(command);
    QStringList offered = bashOffers({"vistrel-cli", command, "--"});
    offered.sort();
    QCOMPARE(offered, QStringList(help.options.keys()));
    QVERIFY(bashOffers({"vistrel-cli", command, "ca"}).contains("card"));
    for (auto option = help.options.begin(); option != help.options.end(); ++option) {
        if (!option.value().contains('|'))
            continue;
        QCOMPARE(bashOffers({"vistrel-cli", command, option.key(), ""}), option.value().split('|'));
        QCOMPARE(bashOffers({"vistrel-cli", command, option.key(), "=", ""}),
                 option.value().split('|'));
    }
}

void ToolTextsTest::shellsTakeTheirScripts_data()
{
    QTest::addColumn<QStringList>("check");
    QTest::newRow("bash") << QStringList{"-n"};
    QTest::newRow("zsh") << QStringList{"-f", "-n"};
    QTest::newRow("fish") << QStringList{"-n"};
}

void ToolTextsTest::shellsTakeTheirScripts()
{
    QFETCH(QStringList, check);
    const QString shell = QString::fromLatin1(QTest::currentDataTag());
    const ProgramRun run = runProgram(shell, check + QStringList{script(shell)});
    QVERIFY2(run.status == 0 && run.error.isEmpty(), run.error.constData());
}

void ToolTextsTest::namesOfTheShellsAreOffered()
{
    QCOMPARE(bashOffers({"vistrel-cli", "--completion", ""}), QStringList({"bash", "zsh", "fish"}));
    QCOMPARE(bashOffers({"vistrel-cli", "--completion", "=", "z"}), QStringList("zsh"));
}

void ToolTextsTest::zshTakesItsScriptBySourceToo()
{
    const ProgramRun run =
        runProgram("zsh", {"-f", "-c",
                           "autoload -Uz compinit; compinit -u -D; source '" + script("zsh") +
                               "'; print -r -- $_comps[vistrel-cli]"});
    QCOMPARE(run.error, QByteArray());
    QCOMPARE(run.out, QByteArray("_vistrel_cli\n"));
}

void ToolTextsTest::everyShellKnowsEveryOption()
{
    QFETCH(QString, command);
    const QString zsh = textOf(script("zsh"));
    const int start = zsh.indexOf("        " + command + ")\n");
    const QString ofZsh = zsh.mid(start, zsh.indexOf(";;", start) - start);
    const ProgramRun fish = runProgram(
        "fish", {"-N", "-c",
                 "source '" + script("fish") + "'; complete -C 'vistrel-cli " + command + " --'"});
    const QStringList names = helpOf(command).options.keys();
    const QString expected = listOf(QSet<QString>(names.begin(), names.end()));
    QSet<QString> offered;
    for (const QString& line : QString::fromUtf8(fish.out).split('\n', Qt::SkipEmptyParts))
        offered << line.section('\t', 0, 0);
    QCOMPARE(listOf(offered), expected);
    for (const QString& name : names)
        QVERIFY2(ofZsh.contains("*" + name + '['), qPrintable(name));
}

QTEST_MAIN(ToolTextsTest)
#include "ToolTextsTest.moc"

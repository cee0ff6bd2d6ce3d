#include "Cli/completion.h"

namespace corv::cli {
namespace {

using Options = QList<QCommandLineOption>;

// What follows an option, by the name of its value.
enum class Value { none, words, file, text };

Value valueOf(const QCommandLineOption& option)
{
    const QString name = option.valueName();
    if (name.isEmpty())
        return Value::none;
    if (name.contains(QLatin1Char('|')))
        return Value::words;
    for (const char* path : {"FILE", "FOLDER", "DIR", "IMAGE", "PROJECT", "VIDEO"})
        if (name.startsWith(QLatin1String(path)))
            return Value::file;
    return Value::text;
}

QString nameOf(const QCommandLineOption& option)
{
    return option.names().constFirst();
}

QString wordsOf(const QCommandLineOption& option)
{
    return option.valueName().replace(QLatin1Char('|'), QLatin1Char(' '));
}

QString optionWords(const Options& options)
{
    QStringList words;
    for (const QCommandLineOption& option : options)
        words << QStringLiteral("--") + nameOf(option);
    return words.join(QLatin1Char(' '));
}

// In single quotes of a shell.
QString quoted(QString text, const char* apostrophe)
{
    text.replace(QLatin1Char('\''), QLatin1String(apostrophe));
    return QLatin1Char('\'') + text + QLatin1Char('\'');
}

// --- bash ------------------------------------------------------------------------------------

QString bashCase(const Command& command, const Options& options)
{
    QString text = QStringLiteral("    %1)\n        case $prev in\n").arg(command.name);
    for (const QCommandLineOption& option : options) {
        const Value value = valueOf(option);
        if (value == Value::none)
            continue;
        text += QStringLiteral("        --%1) ").arg(nameOf(option));
        if (value == Value::words)
            text +=
                QStringLiteral("COMPREPLY=($(compgen -W '%1' -- \"$cur\")); ").arg(wordsOf(option));
        else if (value == Value::file)
            text += QStringLiteral("_vistrel_cli_files; ");
        text += QStringLiteral("return ;;\n");
    }
    return text +
           QStringLiteral("        esac\n        options='%1' ;;\n").arg(optionWords(options));
}

QByteArray bash(const std::vector<Command>& commands, const Options& common, const Options& leading)
{
    QStringList names;
    QString cases;
    for (const Command& command : commands) {
        names << command.name;
        cases += bashCase(command, command.options + common);
    }
    const QString script = QStringLiteral(R"(# bash completion for vistrel-cli

_vistrel_cli_files()
{
    compopt -o filenames 2>/dev/null
    local IFS=$'\n'
    COMPREPLY=($(compgen -f -- "$cur"))
}

_vistrel_cli()
{
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} command= options= i
    COMPREPLY=()
    # "--option=value" comes as three words.
    if [[ $cur == = ]]; then
        cur=
    elif [[ $prev == = ]]; then
        prev=${COMP_WORDS[COMP_CWORD-2]}
    fi
    for ((i = 1; i < COMP_CWORD; i++)); do
        if [[ ${COMP_WORDS[i]} != -* && ${COMP_WORDS[i]} != = ]]; then
            command=${COMP_WORDS[i]}
            break
        fi
    done
    case $command in
    '')
        [[ $prev == --completion ]] && options='%4' || options='%1 %2'
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
        return ;;
%3    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
    else
        _vistrel_cli_files
    fi
}

complete -F _vistrel_cli vistrel-cli
)");
    return script
        .arg(names.join(QLatin1Char(' ')), optionWords(leading + common), cases,
             completionShells().join(QLatin1Char(' ')))
        .toUtf8();
}

// --- zsh -------------------------------------------------------------------------------------

QString zshText(QString text)
{
    for (const char* special : {"\\", "[", "]", ":"})
        text.replace(QLatin1String(special), QLatin1Char('\\') + QLatin1String(special));
    return text;
}

QString zshOption(const QCommandLineOption& option)
{
    QString text = QStringLiteral("*--%1[%2]").arg(nameOf(option), zshText(option.description()));
    switch (valueOf(option)) {
    case Value::words:
        text += QStringLiteral(":value:(%1)").arg(wordsOf(option));
        break;
    case Value::file:
        text += QStringLiteral(":file:_files");
        break;
    case Value::text:
        text += QStringLiteral(":%1: ").arg(zshText(option.valueName()));
        break;
    case Value::none:
        break;
    }
    return quoted(text, "'\\''");
}

QString zshOptions(const Options& options)
{
    QStringList words;
    for (const QCommandLineOption& option : options)
        words << zshOption(option);
    return words.join(QLatin1String(" \\\n            "));
}

QByteArray zsh(const std::vector<Command>& commands, const Options& common, const Options& leading)
{
    QString names;
    QString cases;
    for (const Command& command : commands) {
        names +=
            QStringLiteral("        %1\n")
                .arg(quoted(command.name + QLatin1Char(':') + zshText(command.summary), "'\\''"));
        cases += QStringLiteral("        %1)\n            _arguments %2 \\\n"
                                "            '*:file:_files' ;;\n")
                     .arg(command.name, zshOptions(command.options + common));
    }
    const QString script = QStringLiteral(R"(#compdef vistrel-cli

_vistrel_cli()
{
    local context state state_descr line
    typeset -A opt_args
    local -a commands
    commands=(
%1    )
    _arguments -C %2 \
            '1:command:->command' '*::argument:->argument'
    case $state in
    command)
        _describe command commands ;;
    argument)
        case $words[1] in
%3        esac ;;
    esac
}

# Read from the folder of completions, or by "source".
if [[ $funcstack[1] == _vistrel-cli ]]; then
    _vistrel_cli "$@"
else
    compdef _vistrel_cli vistrel-cli
fi
)");
    return script.arg(names, zshOptions(leading + common), cases).toUtf8();
}

// --- fish ------------------------------------------------------------------------------------

QString fishOption(const QString& condition, const QCommandLineOption& option)
{
    QString text =
        QStringLiteral("complete -c vistrel-cli -n %1 -l %2").arg(condition, nameOf(option));
    switch (valueOf(option)) {
    case Value::words:
        text += QStringLiteral(" -x -a '%1'").arg(wordsOf(option));
        break;
    case Value::file:
        text += QStringLiteral(" -r -F");
        break;
    case Value::text:
        text += QStringLiteral(" -x");
        break;
    case Value::none:
        break;
    }
    QString description = option.description();
    description.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    return text + QStringLiteral(" -d %1\n").arg(quoted(description, "\\'"));
}

QByteArray fish(const std::vector<Command>& commands, const Options& common, const Options& leading)
{
    const QString first = QStringLiteral("__fish_use_subcommand");
    QString text = QStringLiteral("# fish completion for vistrel-cli\n\n");
    for (const QCommandLineOption& option : leading + common)
        text += fishOption(first, option);
    for (const Command& command : commands) {
        text += QStringLiteral("\ncomplete -c vistrel-cli -n %1 -f -a %2 -d %3\n")
                    .arg(first, command.name, quoted(command.summary, "\\'"));
        const QString seen = QStringLiteral("'__fish_seen_subcommand_from %1'").arg(command.name);
        for (const QCommandLineOption& option : command.options + common)
            text += fishOption(seen, option);
    }
    return text.toUtf8();
}

} // namespace

QStringList completionShells()
{
    return {QStringLiteral("bash"), QStringLiteral("zsh"), QStringLiteral("fish")};
}

QByteArray completion(const QString& shell, const std::vector<Command>& commands,
                      const Options& common, const Options& leading)
{
    if (shell == QLatin1String("bash"))
        return bash(commands, common, leading);
    if (shell == QLatin1String("zsh"))
        return zsh(commands, common, leading);
    if (shell == QLatin1String("fish"))
        return fish(commands, common, leading);
    return {};
}

} // namespace corv::cli

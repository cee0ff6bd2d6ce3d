#include "Log/LogOpening.h"

#include "Log/logCategory.h"
#include "Log/logFailures.h"

#include <QDebug>
#include <QFileInfo>

namespace corv {
namespace {

constexpr qint64 kHeadBytes = 4096; // enough to see whether a file begins like a log

void logUnreadable()
{
    qCInfo(lcLog) << "ERROR: Unable to read file.\n";
}

QByteArray headOf(QFile* file)
{
    return file->seek(0) ? file->read(kHeadBytes) : QByteArray();
}

Failure parseFailure(const LogOpening& opening, const LogDescription::Fault& fault)
{
    if (!fault.text) {
        logUnreadable();
        return logReadFailure(opening.path, opening.file->size() < opening.beginByte);
    }
    qCInfo(lcLog) << "ERROR: log parsing: " << fault.text;
    switch (fault.kind) {
    case LogDescription::Fault::Kind::tooLong:
        return logDescriptionTooLarge(opening.path, headOf(opening.file.get()),
                                      LogDescription::kLongestBytes);
    case LogDescription::Fault::Kind::noMemory:
        return logNoMemory(opening.path);
    default:
        return logDescriptionFailure(opening.path, headOf(opening.file.get()), fault.hasEnd,
                                     QString::fromUtf8(fault.text));
    }
}

} // namespace

void LogOpening::logElapsed() const
{
    qCInfo(lcLog) << "Elapsed time: " << static_cast<double>(timer.elapsed()) / 1000.0 << "s.";
}

Failure abortedLog(const QString& path)
{
    qCInfo(lcLog) << "Aborted.";
    return logCancelled(path);
}

Failure tooManyPackets(const QString& path)
{
    qCWarning(lcLog) << "ERROR: log with more packets of one kind than can be numbered";
    return {Failure::Kind::tooLarge,
            QStringLiteral("The log \"%1\" has more packets of one kind than can be numbered.")
                .arg(path)};
}

Status scanStatus(const QString& path, const FileWindow& window, bool scannedWhole)
{
    if (window.hasFailed()) {
        logUnreadable();
        return logReadFailure(path, window.isCutShort());
    }
    if (!scannedWhole)
        return abortedLog(path);
    return {};
}

Result<LogOpening> openLog(const QString& path,
                           const std::function<void(int stage, int done, int total)>& progress,
                           const std::atomic<bool>& abortFlag, LogMessages messages)
{
    const bool saysSteps = messages == LogMessages::steps;
    const auto isAborted = [&abortFlag] { return abortFlag.load(std::memory_order_relaxed); };
    LogOpening opening;
    opening.path = path;
    opening.log = std::make_unique<LogFile>();
    opening.file = std::make_unique<QFile>(path);
    // Anything but a plain file, a device for instance, may have no end.
    if (!QFileInfo(path).isFile() ||
        !opening.file->open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        logUnreadable();
        return logOpenFailure(path);
    }
    opening.log->setFileName(path.toStdString());

    if (saysSteps)
        qCInfo(lcLog) << "XML parsing...  ";
    opening.timer.start();
    opening.beginByte = LogDescription::findLength(opening.file.get(), &abortFlag);
    if (opening.beginByte < 0) {
        logUnreadable();
        return logReadFailure(path, false);
    }
    if (isAborted())
        return abortedLog(path);
    LogDescription description;
    if (const auto fault = description.parse(opening.file.get(), opening.beginByte))
        return parseFailure(opening, *fault);
    if (isAborted())
        return abortedLog(path);
    if (saysSteps) {
        qCInfo(lcLog) << "Parsed.";
        qCInfo(lcLog) << "Retrieving log version...  ";
    }
    progress(0, 0, 0);
    if (!description.build(opening.log.get(), &abortFlag))
        return abortedLog(path);
    opening.version = description.version();
    if (saysSteps) {
        qCInfo(lcLog) << "Retrieved. Log version is version " << opening.version << ".";
        opening.logElapsed();
    }

    opening.described = description.takeGroups();
    opening.framing.wideSize = opening.version >= 1;
    opening.forEachReachable([&opening](const LogGroup& group, const DescribedGroup&) {
        opening.framing.types[static_cast<size_t>(group.getId())] = {true, group.getPacketSize()};
    });
    opening.endByte = opening.file->size();
    return opening;
}

Status allocateVar(const QString& path, LogGroup* group, const DescribedVar& item, bool dense)
{
    LogVar& var = group->getVars()[item.var];
    const auto name = [&] {
        return QStringLiteral("\"%1\" of the group \"%2\"")
            .arg(QString::fromStdString(var.getName()), QString::fromStdString(group->getName()));
    };
    if (var.getData() && group->getNbPackets() > 0 &&
        var.getElementSize() != LogVar::typeSize(item.type)) {
        qCWarning(lcLog) << "ERROR: log field declared twice with elements of different sizes:"
                         << group->getName().c_str() << var.getName().c_str();
        return Failure{Failure::Kind::damaged,
                       QStringLiteral("The log \"%1\" declares the field %2 twice, with elements "
                                      "of different sizes.")
                           .arg(path, name())};
    }
    if (!var.allocate(item.nb, group->getNbPackets(), item.type, dense)) {
        qCWarning(lcLog) << "ERROR: log field too large, 2 GiB or more or no memory left:"
                         << group->getName().c_str() << var.getName().c_str() << "with" << item.nb
                         << "elements in each of" << group->getNbPackets() << "packets";
        if (LogVar::fits(item.nb, group->getNbPackets(), item.type))
            return logNoMemory(path);
        return Failure{Failure::Kind::tooLarge,
                       QStringLiteral("The field %2 of the log \"%1\" has 2 GiB or more of data.")
                           .arg(path, name())};
    }
    return {};
}

} // namespace corv

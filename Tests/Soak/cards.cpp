#include "Activity.h"
#include "programs.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <thread>

namespace corv::soak {
namespace {

/// Takes files away, cuts them short or swaps them for others while a program reads them: a card
/// that is pulled out, a folder that somebody clears. The program ends by itself.
class VanishingCards : public Activity
{
public:
    explicit VanishingCards(const Workshop& shop)
        : m_shop(shop), m_card(shop.folder + QStringLiteral("/card")),
          m_temporary(shop.folder + QStringLiteral("/card-tmp"))
    {
        QDir().mkpath(m_temporary);
    }

    QString name() const override { return QStringLiteral("cards"); }
    QString title() const override
    {
        return QStringLiteral("files that vanish while they are read");
    }

    QString step(QRandomGenerator& random) override
    {
        insertCard();
        const QString video = m_card + QStringLiteral("/CORV0001.mp4");
        const QString log = m_card + QStringLiteral("/a.log");
        const std::vector<QStringList> commands = {
            {QStringLiteral("match"), m_card, m_card},
            {QStringLiteral("log-info"), log},
            {QStringLiteral("report"), video, log, QStringLiteral("--out"),
             m_temporary + QStringLiteral("/r.docx")},
            {QStringLiteral("frames"), video, log, QStringLiteral("--thermal"),
             QStringLiteral("--out"), m_temporary}};
        const QStringList& command =
            commands[random.bounded(static_cast<quint32>(commands.size()))];
        const int kind = static_cast<int>(random.bounded(3));
        const QString victim = random.bounded(2) ? video : log;
        const double kept = random.generateDouble();
        const auto delay = std::chrono::milliseconds(random.bounded(600));

        std::thread hand([=] {
            std::this_thread::sleep_for(delay);
            vanish(kind, victim, kept);
        });
        QString error;
        const End end = runProgram(m_shop.commandTool, command, m_temporary, -1, -1, &error);
        hand.join();
        if (end == End::success || end == End::failure)
            return {};
        return QStringLiteral("%1 %2 when %3 vanishes in way %4 (%5)")
            .arg(command[0],
                 end == End::crashed ? QStringLiteral("crashes") : QStringLiteral("does not end"),
                 victim)
            .arg(kind)
            .arg(error.right(2000));
    }

private:
    void insertCard() const
    {
        QDir(m_card).removeRecursively();
        QDir().mkpath(m_card);
        QFile::copy(m_shop.video, m_card + QStringLiteral("/CORV0001.mp4"));
        QFile::copy(m_shop.log, m_card + QStringLiteral("/a.log"));
    }

    void vanish(int kind, const QString& victim, double kept) const
    {
        if (kind == 0) {
            QDir(m_card).removeRecursively();
        } else if (kind == 1) {
            QFile file(victim);
            file.resize(static_cast<qint64>(double(file.size()) * kept));
        } else {
            QFile::remove(victim);
            QDir().mkpath(victim);
        }
    }

    const Workshop m_shop;
    const QString m_card;
    const QString m_temporary;
};

} // namespace

std::unique_ptr<Activity> makeVanishingCards(const Workshop& workshop)
{
    return std::make_unique<VanishingCards>(workshop);
}

} // namespace corv::soak

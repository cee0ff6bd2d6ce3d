#include "Review/SearchJobs.h"

#include "Discovery/DirectoryParser.h"

#include <QVariantMap>

namespace corv {

SearchJobs::SearchJobs(QObject* parent) : QObject(parent) {}

SearchJobs::~SearchJobs()
{
    abandon();
}

DirectoryParser* SearchJobs::parser() const
{
    return m_parser;
}

void SearchJobs::setParser(DirectoryParser* parser)
{
    if (m_parser || !parser)
        return;
    m_parser = parser;
    connect(parser, &DirectoryParser::searchingChanged, this, &SearchJobs::follow);
    connect(parser, &DirectoryParser::videoProgress, this, &SearchJobs::report);
    connect(parser, &DirectoryParser::matchingProgress, this,
            [this](int file, int files) { report(file, files); });
    connect(parser, &DirectoryParser::matchingComplete, this, &SearchJobs::succeed);
    follow();
}

// An aborted search ends without a result.
void SearchJobs::follow()
{
    abandon();
    if (!m_jobs || !m_parser->isSearching())
        return;
    m_job = m_jobs->start(Job::Kind::search, tr("Search flights"), Job::Unit::steps,
                          [parser = m_parser] {
                              if (parser)
                                  parser->abortParsing();
                          });
}

void SearchJobs::report(int current, int total)
{
    if (m_job)
        m_job->report(current - 1, total);
}

void SearchJobs::succeed(const QVariantList& matchings)
{
    if (m_job)
        m_job->succeed(textOfMatchings(matchings));
    m_job = nullptr;
}

void SearchJobs::abandon()
{
    if (m_job)
        m_job->fail(Failure{Failure::Kind::cancelled, tr("The search was aborted.")});
    m_job = nullptr;
}

QString textOfMatchings(const QVariantList& matchings)
{
    int withLog = 0;
    int doubtful = 0;
    for (const QVariant& entry : matchings) {
        const QVariantMap row = entry.toMap();
        withLog += row[QStringLiteral("matchFound")].toBool();
        doubtful += row[QStringLiteral("doubtful")].toBool();
    }
    if (matchings.isEmpty())
        return SearchJobs::tr("No flights found.");
    QString text = matchings.size() == 1
                       ? SearchJobs::tr("1 video found, ")
                       : SearchJobs::tr("%1 videos found, ").arg(matchings.size());
    text += SearchJobs::tr("%1 with a log").arg(withLog);
    if (doubtful > 0)
        text += SearchJobs::tr(", %1 of them not certain").arg(doubtful);
    return text + QLatin1Char('.');
}

} // namespace corv

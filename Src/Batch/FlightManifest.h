#pragma once

#include "Base/Result.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

namespace corv {

/// What has been done for one flight: for each step the fingerprint of what went into it, and the
/// files that came out, with their sizes. Kept as "manifest.json" in the flight's folder, replaced
/// atomically after each step, so that a run that was killed goes on where it was.
///
/// One run at a time works on a folder; the manifest does not guard against two, `FlightRun` does.
class FlightManifest
{
public:
    /// Reads the manifest of `folder`. A missing or damaged one gives an empty manifest: everything
    /// is then done again, which is slow and never wrong.
    explicit FlightManifest(QString folder);

    /// True if `step` was done with this fingerprint and each of its files is there in its recorded
    /// size.
    bool isDone(const QString& step, const QByteArray& fingerprint) const;

    /// Whether the step was ever done, with any fingerprint.
    bool hasStep(const QString& step) const { return !m_steps.value(step).fingerprint.isEmpty(); }

    /// Whether the step made a result of this digest, or was about to when it was killed.
    bool hasMade(const QString& step, const QByteArray& digest) const;

    /// Records a step and writes the manifest. `files` are relative to the folder; `digest` is by
    /// what `hasMade` knows its result again.
    Status setDone(const QString& step, const QByteArray& fingerprint, const QStringList& files,
                   const QByteArray& digest = {});

    /// Records that a result of this digest is about to be put in place, and writes the manifest.
    /// What was done before stays recorded until `setDone`.
    Status setPending(const QString& step, const QByteArray& digest);

    /// Which flight the folder is for, so that another flight of the same name is not mixed in.
    QByteArray identity() const { return m_identity; }

    /// Makes the folder that of a flight, and writes the manifest.
    Status claimFor(const QByteArray& identity);

private:
    struct Step
    {
        QByteArray fingerprint;
        QMap<QString, qint64> fileSizes;
        QByteArray digest;
        QByteArray pendingDigest;
    };

    void read();
    Status write() const;

    QString m_folder;
    QByteArray m_identity;
    QMap<QString, Step> m_steps;
};

/// A fingerprint of the words of a step and of files: names, sizes and last-modified times of the
/// files, not their contents, which would have to be read in full, and not their folders, since a
/// card is not always mounted in the same place. Missing files count as such.
QByteArray fingerprintOf(const QStringList& words, const QStringList& files);

/// Which flight these videos are, whichever machine and folder they are on: by their names and
/// sizes.
QByteArray identityOf(const QStringList& videos);

} // namespace corv

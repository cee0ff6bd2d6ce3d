#pragma once

#include "Review/RecoveryStore.h"
#include "Review/Review.h"
#include "Threads/pool.h"

#include <QObject>
#include <QTimer>
#include <QVariantMap>
#include <map>

namespace corv {

/// Keeps the unsaved work of a review on disk, and offers what an earlier run left behind.
///
/// Within five seconds of a change the review's contents are in the folder, written on the pool,
/// but only while they differ from those that it was opened with or saved last. A flight that is
/// closed unsaved, and a program that ends without saving, leave them there; a save removes them.
/// It asks nothing and restores nothing by itself. Interface thread only.
class Recovery : public QObject
{
    Q_OBJECT
    Q_PROPERTY(corv::Review* review READ review WRITE setReview)
    Q_PROPERTY(QString folder READ folder WRITE setFolder)
    Q_PROPERTY(QString standardFolder READ standardFolder CONSTANT)
    Q_PROPERTY(bool offered READ isOffered NOTIFY offerChanged)
    Q_PROPERTY(QString offerText READ offerText NOTIFY offerChanged)
    Q_PROPERTY(bool restorable READ isRestorable NOTIFY offerChanged)
    Q_PROPERTY(bool locatable READ isLocatable NOTIFY offerChanged)

public:
    explicit Recovery(QObject* parent = nullptr);

    /// Writes what is not written yet.
    ~Recovery() override;

    Review* review() const { return m_review; }

    /// Not owned; once.
    void setReview(Review* review);

    /// Where unsaved reviews are kept. Empty, as at first: nowhere. Setting it offers what is
    /// there.
    QString folder() const { return m_folder; }
    void setFolder(const QString& folder);

    /// The place for it in the user's data.
    static QString standardFolder();

    /// "Restore your unsaved review of CORV0001 from 14:02 (7 points of interest)", and when its
    /// project was saved if that was later; or why it cannot be restored.
    bool isOffered() const { return m_offer.has_value(); }
    QString offerText() const;
    bool isRestorable() const { return m_offer && !m_offer->problem; }

    /// Whether the offered review lacks its video, and no search for it runs.
    bool isLocatable() const;

    /// Looks for the missing files of the offered review in a folder and below it, on the pool.
    /// With the video among what is found, the review can be restored; it is not restored by
    /// itself.
    Q_INVOKABLE void locate(const QString& folder);

    /// Looks on the pool whether the video of the offered review is there: a card may be back.
    Q_INVOKABLE void lookAgain();

    /// Opens the flight of the offer, in place of what is open, with its unsaved contents.
    Q_INVOKABLE void restore();

    /// Deletes the offered one, and offers the next.
    Q_INVOKABLE void discard();

    /// Puts the offer off until the next start, or until its flight or project is opened.
    Q_INVOKABLE void later();

    /// Writes now what the timer would write. Returns once it is on disk.
    void flush();

    /// The longest time from a change to its being written, in milliseconds, but for the writing.
    static constexpr int delayMs = 2000;
    void setDelay(int ms) { m_timer.setInterval(ms); } ///< for tests

signals:
    void offerChanged();

    /// Unsaved work cannot be kept, and why. Once in a run.
    void notKept(const QString& text);

private:
    /// The contents of a review: adjustments and names, and points of interest by their time. Work
    /// is unsaved while they differ from those that were saved last.
    struct Contents
    {
        QVariantMap properties;
        std::map<int, QVariantMap> pois;

        bool operator==(const Contents& other) const
        {
            return properties == other.properties && pois == other.pois;
        }
    };

    Contents contentsNow() const;
    void rememberSizes();
    void found(const ProjectContents& contents);
    void see(const std::optional<Failure>& problem);
    void settle();
    void settleNames();
    void changed();
    void write();
    void begin();
    void finishPending();
    void sayNotKept(const QString& reason);
    void offerFor(const QString& videoPath, const QString& projectPath);
    void offer(std::optional<RecoveredReview> review);

    QPointer<Review> m_review;
    QString m_folder;
    QTimer m_timer;
    Contents m_saved; ///< as saved last; while they are equal, nothing is kept
    bool m_hasSaidNotKept = false;
    bool m_isAlwaysUnsaved = false; ///< a restored review, until it is saved
    RecoveryStore::Place m_place;   ///< of the flight that is open
    PoolTask m_writing;
    PoolTask m_look;
    std::optional<RecoveredReview> m_offer;
    QHash<QString, qint64> m_sizes;          ///< of the open files, by which they are found again
    std::unique_ptr<MissingMedia> m_missing; ///< the search for the media of the offer
};

} // namespace corv

#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <memory>

class QFileDialog;

namespace corv {

/// Asks for a file: in the desktop's own dialog where its theme has one, in Qt's elsewhere.
///
/// To a document it is a `FileDialog`, with what that lacks: a name that is proposed, and filters
/// that find a suffix in any case in a desktop's dialog, too, where patterns are sensitive to
/// case. It is not left with a folder, nor with a file to open that does not exist in a folder that
/// does: it opens again in that folder. No other window takes keys or clicks while it is open.
/// Interface thread only.
class FileChoice : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString title MEMBER m_title)
    Q_PROPERTY(bool selectExisting MEMBER m_isExisting)
    Q_PROPERTY(QStringList nameFilters MEMBER m_nameFilters)
    Q_PROPERTY(QString proposedName MEMBER m_proposedName)
    Q_PROPERTY(QUrl folder READ folder WRITE setFolder NOTIFY folderChanged)
    Q_PROPERTY(QUrl fileUrl READ fileUrl NOTIFY accepted)
    Q_PROPERTY(QString selectedNameFilter READ selectedNameFilter NOTIFY accepted)
    Q_PROPERTY(bool visible READ isVisible WRITE setVisible NOTIFY visibleChanged)

public:
    explicit FileChoice(QObject* parent = nullptr);
    ~FileChoice() override;

    /// Where the dialog starts. A folder that is not there any more, as on a card that was pulled
    /// out, is replaced by the documents of the user when the dialog opens. After a choice it is
    /// the folder of the chosen file.
    QUrl folder() const { return m_folder; }
    void setFolder(const QUrl& folder);

    /// What was chosen last. Qt's dialog completes a name without a suffix by that of the filter,
    /// and then asks before it replaces a file. A name from the desktop's dialog may lack its
    /// suffix: the pilot has not been asked about the completed name then.
    QUrl fileUrl() const { return m_fileUrl; }

    /// One of `nameFilters`.
    QString selectedNameFilter() const;

    bool isVisible() const { return m_isOpen; }
    void setVisible(bool visible);

    Q_INVOKABLE void open();
    Q_INVOKABLE void close();

signals:
    void folderChanged();
    void visibleChanged();
    void accepted();
    void rejected();

private:
    QStringList filtersFor(const QFileDialog& dialog) const;
    void finish(int result);
    QUrl folderToEnter(const QUrl& chosen) const;
    void enter(const QUrl& folder);

    QString m_title;
    bool m_isExisting = true;
    QStringList m_nameFilters;
    QString m_proposedName;
    QUrl m_folder;
    QUrl m_fileUrl;
    int m_filter = 0;
    std::unique_ptr<QFileDialog> m_dialog; ///< the last one, also when it is closed
    bool m_isOpen = false;
};

/// "Video files (*.mov *.mp4)" with patterns that match "A.MOV", too, whatever compares them:
/// "Video files (*.[mM][oO][vV] *.[mM][pP]4)".
QString filterOfAnyCase(const QString& nameFilter);

} // namespace corv

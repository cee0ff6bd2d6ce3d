#pragma once

#include "CardWorld.h"
#include "UiFixture.h"

#include <memory>

namespace corv::test {

/// A suite of the importer in a real window, opened by an empty main one that shows the welcome
/// panel. Each test has a machine and an interface of its own; one that leaves complaints of the
/// script engine behind fails.
class ImporterSuite : public QObject
{
    Q_OBJECT

protected:
    /// Opens another importer, as the main window does, and waits until it is active.
    void openImporter();

    /// The same beside a card with three flights. Gives the root of the card.
    QString openWithACard();

    /// The value of an expression in the importer's scope.
    QVariant evaluate(const QString& expression) const;

    /// Parts of the importer, by their objectNames.
    QQuickItem* item(const QString& objectName) const { return m_ui->item(objectName, m_importer); }
    void click(const QString& objectName) const;
    QString selectedText(const QString& dropdown) const;
    void focus(QQuickItem* item) const;

    /// Title and text of the open message; empty if there is none.
    QString dialogText() const;
    static void dismissMessage();

    /// Starts a search and waits for its end.
    void search();

    /// Starts a search and waits until it has come to the first file, where it stays until
    /// `m_world->release()`.
    void startHeldSearch();
    int rowCount() const { return evaluate("matchingsListModel.count").toInt(); }

    /// Adds three flights: named, unnamed for want of a log, named.
    void addDay(const QString& videos, const QString& logs);

    /// Saves the importer's picture to the folder named by VISTREL_SCREENSHOTS, if that is set.
    void grab(const QString& name) const;

    std::unique_ptr<CardWorld> m_world;
    std::unique_ptr<UiFixture> m_ui;
    QQuickWindow* m_importer = nullptr;

private slots:
    void initTestCase();
    void init();
    void cleanup();
};

} // namespace corv::test

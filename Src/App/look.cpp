#include "App/look.h"

#include "App/DialogIcons.h"

#include <QApplication>
#include <QEvent>
#include <QFont>
#include <QLocale>
#include <QMessageBox>
#include <QPalette>
#include <QPointer>
#include <QProxyStyle>
#include <QStyle>
#include <QStyleFactory>
#include <QTimer>
#include <QVector>
#include <QWindow>
#include <algorithm>

namespace corv {
namespace {

// 9 points where a screen is not scaled: what is used without a desktop.
constexpr int textSizePx = 12;

struct DialogColours
{
    QRgb ground;
    QRgb field;
    QRgb otherRow;
    QRgb button;
    QRgb toolTip;
    QRgb text;
    QRgb faint;
    QRgb highlight;
    QRgb highlightedText;
    QRgb link;
    QRgb visitedLink;
};

DialogColours coloursOf(bool light)
{
    if (light)
        return {0xe9e9e9, 0xffffff, 0xf2f2f2, 0xd0d0d0, 0xffffff, 0x000000,
                0x757575, 0xb4dfc1, 0x000000, 0x0b4ea2, 0x5b2c91};
    return {0x3a3a3a, 0x2b2b2b, 0x333333, 0x555555, 0x000000, 0xeeeeee,
            0x9c9c9c, 0x2c7440, 0xffffff, 0x7ac8ff, 0xc0a8ff};
}

QPalette paletteOf(const DialogColours& colours)
{
    QPalette palette(QColor(colours.button), QColor(colours.ground));
    palette.setColor(QPalette::Base, colours.field);
    palette.setColor(QPalette::AlternateBase, colours.otherRow);
    palette.setColor(QPalette::ToolTipBase, colours.toolTip);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::ToolTipText, QPalette::BrightText})
        palette.setColor(role, colours.text);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, colours.faint);
    palette.setColor(QPalette::PlaceholderText, colours.faint);
    palette.setColor(QPalette::Highlight, colours.highlight);
    palette.setColor(QPalette::HighlightedText, colours.highlightedText);
    palette.setColor(QPalette::Link, colours.link);
    palette.setColor(QPalette::LinkVisited, colours.visitedLink);
    return palette;
}

// Draws from the palette alone, without the small pictures on buttons, which blur on a dense
// screen.
class DialogStyle : public QProxyStyle
{
public:
    using QProxyStyle::QProxyStyle;

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override
    {
        if (hint == SH_DialogButtonBox_ButtonsHaveIcons)
            return 0;
        return QProxyStyle::styleHint(hint, option, widget, returned);
    }

    QIcon standardIcon(StandardPixmap standard, const QStyleOption* option,
                       const QWidget* widget) const override
    {
        switch (standard) {
        case SP_MessageBoxInformation:
            return dialogIcon(DialogSign::Information);
        case SP_MessageBoxQuestion:
            return dialogIcon(DialogSign::Question);
        case SP_MessageBoxWarning:
            return dialogIcon(DialogSign::Warning);
        case SP_MessageBoxCritical:
            return dialogIcon(DialogSign::Failure);
        default:
            return QProxyStyle::standardIcon(standard, option, widget);
        }
    }
};

// The boxes are made deep inside the interface's modules; they are met when they are shown.
class MessageBoxWatch : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const bool shown = event->type() == QEvent::Show;
        if (shown || event->type() == QEvent::WindowActivate) {
            if (auto* box = qobject_cast<QMessageBox*>(watched))
                shown ? take(box) : raiseNewest(box);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    void take(QMessageBox* box)
    {
        // File names are in these texts, and a name may look like markup.
        box->setTextFormat(Qt::PlainText);
        stackOnNewest(box);
        m_boxes.append(box);
        QTimer::singleShot(0, box, [this] { raiseNewest(nullptr); });
    }

    // The window system keeps a window above the one it belongs to, also when that one is raised
    // without becoming active.
    void stackOnNewest(QMessageBox* box) const
    {
        QWindow* const window = box->windowHandle();
        if (!window || m_boxes.contains(box))
            return;
        for (auto older = m_boxes.crbegin(); older != m_boxes.crend(); ++older) {
            if (*older && (*older)->isVisible() && (*older)->windowHandle()) {
                window->setTransientParent((*older)->windowHandle());
                return;
            }
        }
    }

    // Unless `active` is the newest: the older ones wait below until it is answered.
    void raiseNewest(const QMessageBox* active)
    {
        const auto gone = [](const QPointer<QMessageBox>& box) { return !box || box->isHidden(); };
        m_boxes.erase(std::remove_if(m_boxes.begin(), m_boxes.end(), gone), m_boxes.end());
        if (m_boxes.isEmpty() || m_boxes.last() == active)
            return;
        m_boxes.last()->raise();
        m_boxes.last()->activateWindow();
    }

    QVector<QPointer<QMessageBox>> m_boxes;
};

} // namespace

void followScreenScale()
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    // Or icons of dialogs are drawn small and enlarged.
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
}

void hastenFirstFrame()
{
    const auto setUnlessSet = [](const char* name, const char* value) {
        if (!qEnvironmentVariableIsSet(name))
            qputenv(name, value);
    };
    // The way in which Qt does it for graphics units that cannot read their own textures.
    setUnlessSet("QT_ENABLE_GLYPH_CACHE_WORKAROUND", "1");
    // All icons have room in it, those of dense screens too; otherwise it is as large as a window.
    setUnlessSet("QSG_ATLAS_WIDTH", "512");
    setUnlessSet("QSG_ATLAS_HEIGHT", "512");
}

void usePlainNumbers()
{
    QLocale::setDefault(QLocale::c());
}

void useTextSizeOfWindows()
{
    QFont font = QApplication::font();
    font.setPixelSize(textSizePx);
    // That of single kinds of controls as well, which some desktops have.
    QApplication::setFont(font);
}

void useDialogColours(bool light)
{
    QApplication::setPalette(paletteOf(coloursOf(light)));
}

void dressDialogs(QApplication& application)
{
    // The one style that draws everything from the palette.
    if (QStyle* style = QStyleFactory::create(QStringLiteral("Fusion")))
        QApplication::setStyle(new DialogStyle(style));
    useDialogColours(false);
    application.installEventFilter(new MessageBoxWatch(&application));
}

} // namespace corv

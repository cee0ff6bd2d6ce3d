#include "WindowTexts.h"

#include "Support/contrast.h"

#include <QAbstractButton>
#include <QLabel>
#include <QScreen>
#include <QVector>

namespace corv::test {
namespace {

constexpr double readable = 4.5;
constexpr double visible = 3.0;
// Half a pixel of rounding on each side.
constexpr double slack = 1.0;

QRectF placeOf(QQuickItem* item)
{
    return item->mapRectToScene(QRectF(0, 0, item->width(), item->height()));
}

bool isText(QQuickItem* item)
{
    return (item->inherits("QQuickText") || item->inherits("QQuickTextInput") ||
            item->inherits("QQuickTextEdit")) &&
           !item->property("text").toString().isEmpty();
}

bool isIcon(QQuickItem* item)
{
    return item->inherits("corv::TintedPicture");
}

// The colours of a setter that cannot be used are settled, its button's icon among them.
bool hasStatedColours(QQuickItem* item)
{
    return item->property("source").toString().contains("button_icon_reset_defaults");
}

/// Looks at the items of a window in the order in which they are painted.
class Look
{
public:
    Look(QQuickWindow* window, const QImage& picture)
        : m_window(window), m_picture(picture), m_density(window->effectiveDevicePixelRatio())
    {
    }

    QStringList take()
    {
        look(m_window->contentItem(), QRectF(QPointF(), m_window->size()), 1, true);
        for (int i = 0; i < m_texts.size(); ++i)
            compare(i);
        return m_faults;
    }

private:
    struct Text
    {
        QQuickItem* item;
        QString words;
        QRectF place; ///< of what is painted
        bool usable;
    };

    void look(QQuickItem* item, QRectF clip, double opacity, bool usable)
    {
        opacity *= item->opacity();
        if (!item->isVisible() || opacity < 0.05)
            return;
        usable = usable && item->isEnabled();
        const QRectF place = placeOf(item);
        if (item->clip())
            clip &= place;
        hideBehind(item, place & clip, opacity);
        // Rows that a list has scrolled out of sight.
        if (isText(item) && clip.intersects(place))
            take(item, place, clip, usable);
        else if (isIcon(item) && (usable || !hasStatedColours(item)) && clip.contains(place))
            checkContrast(item, "icon " + item->property("source").toString(), place, visible);
        for (QQuickItem* child : inPaintingOrder(item))
            look(child, clip, opacity, usable);
    }

    static QVector<QQuickItem*> inPaintingOrder(QQuickItem* item)
    {
        const QList<QQuickItem*> all = item->childItems();
        QVector<QQuickItem*> children(all.cbegin(), all.cend());
        std::stable_sort(children.begin(), children.end(),
                         [](QQuickItem* a, QQuickItem* b) { return a->z() < b->z(); });
        return children;
    }

    // An opaque ground hides the texts that were painted before in its place, as a panel does that
    // is open above others.
    void hideBehind(QQuickItem* item, const QRectF& place, double opacity)
    {
        if (!item->inherits("QQuickRectangle") || opacity < 1 ||
            item->property("color").value<QColor>().alpha() < 255)
            return;
        for (int i = m_texts.size() - 1; i >= 0; --i) {
            const QRectF text = m_texts[i].place;
            if (place.contains(text.adjusted(slack, slack, -slack, -slack)))
                m_texts.removeAt(i);
            else if (place.adjusted(slack, slack, -slack, -slack).intersects(text))
                m_faults << "half covered: " + m_texts[i].words;
        }
    }

    void take(QQuickItem* item, const QRectF& place, const QRectF& clip, bool usable)
    {
        Text text{item, item->property("text").toString().left(60), painted(item), usable};
        const bool elided =
            item->property("elide").toInt() != Qt::ElideNone && item->property("elide").isValid();
        const bool field = !item->inherits("QQuickText");
        // A field scrolls to its cursor, and what has an ellipsis says by it that there is more.
        if (!elided && !field) {
            if (item->property("contentWidth").toDouble() > item->width() + slack)
                m_faults << "too wide: " + text.words;
            if (item->property("contentHeight").toDouble() > item->height() + slack)
                m_faults << "too high: " + text.words;
            if (item->property("truncated").toBool())
                m_faults << "cut off: " + text.words;
        }
        if (elided && item->property("truncated").toBool() && item->width() < 40)
            m_faults << "no room: " + text.words;
        const QRectF room = clip.adjusted(-slack, -slack, slack, slack);
        if (!field && !scrolls(item) && !room.contains(text.place))
            m_faults << "outside: " + text.words;
        const QRectF frame = frameAround(item);
        if (!field && !scrolls(item) && frame.isValid() &&
            (text.place.left() < frame.left() - slack ||
             text.place.right() > frame.right() + slack))
            m_faults << "wider than its frame: " + text.words;
        const QScreen* screen = m_window->screen();
        const QRectF onScreen = text.place.translated(m_window->geometry().topLeft());
        if (!scrolls(item) && onScreen.bottom() > screen->geometry().bottom() + slack)
            m_faults << "below the screen: " + text.words;
        text.place &= clip;
        if (clip.contains(place))
            checkContrast(item, text.words, place & clip, usable ? readable : visible);
        m_texts.append(text);
    }

    // The part of its room that a text paints.
    static QRectF painted(QQuickItem* item)
    {
        const double width = qMin(item->property("contentWidth").toDouble(), item->width());
        const double height = qMin(item->property("contentHeight").toDouble(), item->height());
        const int across = item->property("effectiveHorizontalAlignment").toInt();
        const int along = item->property("verticalAlignment").toInt();
        const double x = across & Qt::AlignRight     ? item->width() - width
                         : across & Qt::AlignHCenter ? (item->width() - width) / 2
                                                     : 0;
        const double y = along & Qt::AlignBottom    ? item->height() - height
                         : along & Qt::AlignVCenter ? (item->height() - height) / 2
                                                    : 0;
        return item->mapRectToScene(QRectF(x, y, width, height));
    }

    // The ground that a text is on, such as that of its button; an invalid one if it has none.
    static QRectF frameAround(QQuickItem* item)
    {
        for (QQuickItem* above = item->parentItem(); above; above = above->parentItem()) {
            if (above->inherits("QQuickRectangle") && above->width() > 0)
                return placeOf(above);
        }
        return {};
    }

    // Whether the item is inside something that scrolls, where it may begin or end outside the
    // frame.
    static bool scrolls(QQuickItem* item)
    {
        for (QQuickItem* above = item; above; above = above->parentItem()) {
            if (above->inherits("QQuickFlickable"))
                return true;
        }
        return false;
    }

    void checkContrast(QQuickItem* item, const QString& what, const QRectF& place, double floor)
    {
        const QRect pixels(qRound(place.x() * m_density), qRound(place.y() * m_density),
                           qRound(place.width() * m_density), qRound(place.height() * m_density));
        const QColor ground = mostFrequentColour(m_picture.copy(pixels & m_picture.rect()));
        const QColor colour = item->property("color").value<QColor>();
        const double ratio = contrast(colour, ground);
        // A text that fills its room leaves more of its own colour than of the ground's.
        if (ratio < floor && ground != colour)
            m_faults << QString("contrast %1 of %2 on %3: %4")
                            .arg(ratio, 0, 'f', 2)
                            .arg(colour.name(), ground.name(), what);
    }

    void compare(int index)
    {
        for (int other = 0; other < index; ++other) {
            const QRectF common = m_texts[index].place & m_texts[other].place;
            if (common.width() > slack && common.height() > slack)
                m_faults << m_texts[index].words + " over " + m_texts[other].words;
        }
    }

    QQuickWindow* m_window;
    QImage m_picture;
    double m_density;
    QVector<Text> m_texts;
    QStringList m_faults;
};

} // namespace

QStringList faultsOf(QQuickWindow* window, const QImage& picture)
{
    return Look(window, picture).take();
}

QStringList faultsOf(QWidget* dialog)
{
    QStringList faults;
    for (QWidget* child : dialog->findChildren<QWidget*>()) {
        if (!child->isVisible())
            continue;
        auto* label = qobject_cast<QLabel*>(child);
        auto* button = qobject_cast<QAbstractButton*>(child);
        const QString words = label ? label->text() : button ? button->text() : QString();
        if (words.isEmpty())
            continue;
        const QSize needed = label && label->wordWrap()
                                 ? QSize(0, label->heightForWidth(label->width()))
                                 : child->minimumSizeHint();
        if (child->width() < needed.width() || child->height() < needed.height())
            faults << "too small: " + words.left(60);
        const QPalette& palette = child->palette();
        const double ratio =
            label ? contrast(palette.color(QPalette::WindowText), palette.color(QPalette::Window))
                  : contrast(palette.color(QPalette::ButtonText), palette.color(QPalette::Button));
        if (child->isEnabled() && ratio < readable)
            faults << QString("contrast %1: %2").arg(ratio, 0, 'f', 2).arg(words.left(60));
    }
    return faults;
}

} // namespace corv::test

#pragma once

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QSize>
#include <QString>
#include <limits>
#include <vector>

namespace corv::test {

struct PaintedText
{
    QString text;
    QPointF baseline; ///< its left end, in pixels
};

/// A device that keeps the texts that are painted on it, and no picture: a test reads what a
/// painter writes without writing it again.
class TextDevice : public QPaintDevice
{
public:
    explicit TextDevice(QSize size) : m_size(size) {}

    QPaintEngine* paintEngine() const override { return &m_engine; }
    const std::vector<PaintedText>& texts() const { return m_engine.texts; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
            return m_size.width();
        case PdmHeight:
            return m_size.height();
        case PdmDepth:
            return 32;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return qRound(devicePixelRatioFScale());
        case PdmNumColors:
            return std::numeric_limits<int>::max();
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return 96;
        default:
            return QPaintDevice::metric(metric);
        }
    }

private:
    class Engine : public QPaintEngine
    {
    public:
        Engine() : QPaintEngine(QPaintEngine::AllFeatures) {}
        bool begin(QPaintDevice*) override { return true; }
        bool end() override { return true; }
        void updateState(const QPaintEngineState&) override {}
        Type type() const override { return User; }
        void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}
        void drawPath(const QPainterPath&) override {}
        void drawPolygon(const QPointF*, int, PolygonDrawMode) override {}
        void drawTextItem(const QPointF& baseline, const QTextItem& item) override
        {
            texts.push_back({item.text(), painter()->transform().map(baseline)});
        }

        std::vector<PaintedText> texts;
    };

    QSize m_size;
    mutable Engine m_engine;
};

} // namespace corv::test

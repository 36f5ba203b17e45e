#include "windlib/qt/dark_style.h"

#include <QPainter>
#include <QStyleOption>

namespace {

constexpr double faint = 0.35;  // of a disabled icon

QColor between(const QColor& one, const QColor& other) {
    return QColor((one.red() + other.red()) / 2, (one.green() + other.green()) / 2,
                  (one.blue() + other.blue()) / 2);
}

// Of a field: fainter than a check box's, as what is in it is seen.
void drawFrame(QPainter& painter, const QStyleOption& option) {
    const QColor ground = option.palette.color(QPalette::Base);
    const QColor half = between(option.palette.color(QPalette::Text), ground);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(option.state & QStyle::State_HasFocus
                       ? option.palette.color(QPalette::Highlight).lighter(150)
                       : between(half, ground));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
    painter.restore();
}

void drawCheck(QPainter& painter, const QRectF& box, const QColor& ink) {
    painter.setPen(QPen(ink, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const auto at = [&](double x, double y) {
        return QPointF(box.left() + x * box.width(), box.top() + y * box.height());
    };
    const QPointF points[] = {at(0.22, 0.52), at(0.42, 0.74), at(0.8, 0.28)};
    painter.drawPolyline(points, 3);
}

}  // namespace

void DarkStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
    const bool round = element == PE_IndicatorRadioButton;
    if (element == PE_FrameLineEdit) return drawFrame(*painter, *option);
    if (element != PE_IndicatorCheckBox && !round)
        return QProxyStyle::drawPrimitive(element, option, painter, widget);
    const auto group = option->state & State_Enabled ? QPalette::Active : QPalette::Disabled;
    const QColor ink = option->palette.color(group, QPalette::WindowText);
    const QColor ground = option->palette.color(group, QPalette::Base);
    const QRectF box = QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(option->state & State_HasFocus ? option->palette.color(QPalette::Highlight).lighter(150)
                                                   : between(ink, ground));
    painter->setBrush(ground);
    if (round)
        painter->drawEllipse(box);
    else
        painter->drawRoundedRect(box, 2, 2);
    painter->setBrush(ink);
    const double inset = box.width() / 3.5;
    if (option->state & State_On && !round) drawCheck(*painter, box, ink);
    painter->setPen(Qt::NoPen);
    if (option->state & State_On && round) painter->drawEllipse(box.adjusted(inset, inset, -inset, -inset));
    if (option->state & State_NoChange) painter->drawRect(box.adjusted(inset, inset, -inset, -inset));
    painter->restore();
}

QPixmap DarkStyle::generatedIconPixmap(QIcon::Mode mode, const QPixmap& pixmap,
                                       const QStyleOption* option) const {
    if (mode != QIcon::Disabled) return QProxyStyle::generatedIconPixmap(mode, pixmap, option);
    QPixmap drawn(pixmap.size());
    drawn.setDevicePixelRatio(pixmap.devicePixelRatio());
    drawn.fill(Qt::transparent);
    QPainter painter(&drawn);
    painter.setOpacity(faint);
    painter.drawPixmap(0, 0, pixmap);
    return drawn;
}

// The style of the dark scheme: the desktop's, with what can't be seen on a dark ground drawn anew.
#pragma once

#include <QProxyStyle>

class DarkStyle : public QProxyStyle {
  public:
    // key: of the style that draws the rest.
    explicit DarkStyle(const QString& key) : QProxyStyle(key) {}

    // Check boxes, radio buttons and fields have a frame that is seen.
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    // A disabled icon is the same one, faint.
    QPixmap generatedIconPixmap(QIcon::Mode mode, const QPixmap& pixmap,
                                const QStyleOption* option) const override;
};

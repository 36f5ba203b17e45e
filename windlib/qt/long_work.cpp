#include "windlib/qt/long_work.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <vector>

namespace {

int pace = 40;

}  // namespace

class LongWork::Filter : public QObject {
  public:
    explicit Filter(std::function<void(double, double)> show) : show_(std::move(show)) {
        since_.start();
        qApp->installEventFilter(this);
    }
    ~Filter() override {
        qApp->removeEventFilter(this);
        for (Kept& kept : kept_)
            if (kept.receiver) QCoreApplication::postEvent(kept.receiver, kept.event.release());
    }
    bool tell(double done, double total) {
        if (since_.elapsed() >= pace) {
            if (show_) show_(done, total);
            QCoreApplication::processEvents();
            since_.restart();
        }
        return !stopped_;
    }
    bool eventFilter(QObject* receiver, QEvent* event) override {
        switch (event->type()) {
            case QEvent::KeyPress:
            case QEvent::ShortcutOverride:
                stopped_ = stopped_ || static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape;
                return true;
            case QEvent::MouseButtonPress:
            case QEvent::MouseButtonDblClick:
                ignored_ |= static_cast<QMouseEvent*>(event)->button();
                break;
            case QEvent::MouseButtonRelease:
                keepRelease(receiver, *static_cast<QMouseEvent*>(event));
                break;
            case QEvent::MouseMove:
            case QEvent::Wheel:
                keepLast(receiver, *event);
                break;
            case QEvent::KeyRelease:
            case QEvent::Shortcut:
            case QEvent::ToolTip:
            case QEvent::TouchBegin:
            case QEvent::TouchUpdate:
            case QEvent::TouchEnd:
            case QEvent::NativeGesture:
            case QEvent::InputMethod:
            case QEvent::ContextMenu:
            case QEvent::DragEnter:
            case QEvent::DragMove:
            case QEvent::Drop:
            case QEvent::Close:
                break;
            default:
                return false;
        }
        event->ignore();
        return true;
    }

  private:
    struct Kept {
        QPointer<QObject> receiver;
        std::unique_ptr<QEvent> event;
    };

    void keep(QObject* receiver, const QEvent& event) {
        kept_.push_back({receiver, std::unique_ptr<QEvent>(event.clone())});
    }
    void keepLast(QObject* receiver, const QEvent& event) {
        std::erase_if(kept_, [&](const Kept& kept) {
            return kept.receiver == receiver && kept.event->type() == event.type();
        });
        keep(receiver, event);
    }
    // A button that was pressed meanwhile has done nothing, and its release does nothing.
    void keepRelease(QObject* receiver, const QMouseEvent& event) {
        if (ignored_ & event.button())
            ignored_ &= ~Qt::MouseButtons(event.button());
        else
            keep(receiver, event);
    }

    std::function<void(double, double)> show_;
    QElapsedTimer since_;
    Qt::MouseButtons ignored_ = Qt::NoButton;
    std::vector<Kept> kept_;
    bool stopped_ = false;
};

LongWork::LongWork(std::function<void(double, double)> show)
    : filter_(std::make_unique<Filter>(std::move(show))) {}
LongWork::~LongWork() = default;
bool LongWork::tell(double done, double total) {
    return filter_->tell(done, total);
}
void LongWork::setPace(int milliseconds) {
    pace = milliseconds;
}

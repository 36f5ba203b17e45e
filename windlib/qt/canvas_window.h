// One canvas window: the picture, its two scroll bars, the message line with the progress of long work, and
// loading.
#pragma once

#include <QWidget>
#include <memory>
#include <string>

class PictureView;
class QLabel;
class QProgressBar;
class QScrollBar;
class LongWork;

class CanvasWindow : public QWidget {
    Q_OBJECT
  public:
    CanvasWindow(const std::string& title, bool live);
    ~CanvasWindow() override;

    // Opens a data source in place of the one shown: imports it when it is raw, reads its configure file,
    // shows the first view. False when nothing could be shown; the user was told.
    bool load(const std::string& name);
    PictureView& view() { return *view_; }
    bool isLive() const { return live_; }
    // The text of the message line.
    std::string message() const;
    void chooseAndLoad();

    // Windows that are open now.
    static int count();

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void build();
    void connectBars();
    void syncBars();
    void showFields();
    void showPointer(int x);
    void showProgress(double done, double total);
    bool showStore(struct OpenedSource& opened, const std::string& name);
    // Long work begins and ends; calls nest.
    void setBusy(bool busy);
    void say(const std::string& text);
    void help();

    bool live_;
    bool loading_ = false;
    int busy_ = 0;
    std::unique_ptr<LongWork> work_;  // while busy
    PictureView* view_ = nullptr;
    QScrollBar* horizontal_ = nullptr;
    QScrollBar* vertical_ = nullptr;
    QLabel* message_ = nullptr;
    QProgressBar* bar_ = nullptr;
};

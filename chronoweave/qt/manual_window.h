// The manual in the program: its pages (Markdown, "docs/manual" of the installation) with a list, a search
// over all of them, and ways back and forth. One window for the whole program, made at first use.
#pragma once

#include <QWidget>
#include <string>
#include <string_view>
#include <vector>

class QListWidget;
class QLineEdit;
class QTextBrowser;

// Name of the page that the name of a window's description or its help key leads to; the window goes first;
// "start" when neither leads anywhere.
std::string manual_PageOf(const std::string& helpKey, const std::string& window);
// Names of all pages in the order of the list; empty when the manual is not installed.
std::vector<std::string> manual_Pages();
// Opens a page by its name, over the window parent. False when there is no such page.
bool manual_Open(const std::string& page, QWidget* parent);
// Opens the page of the window that a widget stands in: by its help key and name, which its DialogView bears.
bool manual_OpenFor(QWidget* widget);
// From now on F1 of the application, which must be there, opens the page of the window that has the keyboard,
// in an open menu that of the commands.
void manual_TakeF1();

class ManualWindow : public QWidget {
    Q_OBJECT
  public:
    explicit ManualWindow(QWidget* parent = nullptr);
    bool open(const std::string& page);
    QTextBrowser& text() { return *text_; }
    // Lists the pages that hold all words of a text, or all pages for an empty one, and marks the words in
    // the open page. As if typed into the field.
    void search(const QString& words);

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QStringList words() const;
    void listPages();
    void showChosen();
    void showInList();
    void markWords();
    void findNext();

    QListWidget* pages_;
    QLineEdit* field_;
    QTextBrowser* text_;
    std::vector<QString> texts_;  // of all pages, as they are read
    QString open_;                // file of the open page
};

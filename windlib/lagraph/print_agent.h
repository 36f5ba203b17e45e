// What stands between code that draws for the screen and a page: it takes each drawing call in pixels of the
// screen and draws it on the page in the page's measures.
#pragma once

#include <string_view>

#include "windlib/lagraph/surface.h"

class PrintAgent {
  public:
    virtual ~PrintAgent() = default;

    // False: drawing goes to the screen as ever.
    virtual bool isActive() const = 0;
    // What is drawn until End stays inside this rectangle; nests.
    virtual void begin(int x, int y, int w, int h) = 0;
    virtual void end() = 0;
    virtual void line(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style) = 0;
    virtual void icon(int x, int y, IconHandle icon) = 0;
    // The baseline's start; in a font slot.
    virtual void text(int x, int y, std::string_view text, Colour foreground, Colour background,
                      int font) = 0;
    // A line whose dashes begin so many pixels into their pattern.
    virtual void phasedLine(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style,
                            int phase) = 0;
    virtual void fill(int x, int y, int w, int h, Colour colour) = 0;
    // The page's pixel of a pixel of the screen.
    virtual int scaleX(int x) const = 0;
    virtual int scaleY(int y) const = 0;
};

// An agent for a document, which its operations are given. What is not overridden draws nothing and leaves
// coordinates as they are. The document outlives it.
template <class Document>
class PrintAgentImpl : public PrintAgent {
  public:
    PrintAgentImpl(Document& document, bool active) : document_(document), active_(active) {}

    bool isActive() const override { return true; }
    void begin(int x, int y, int w, int h) final { beginFor(document_, x, y, w, h); }
    void end() final { endFor(document_); }
    void line(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style) final {
        lineFor(document_, x0, y0, x1, y1, colour, thickness, style);
    }
    void icon(int x, int y, IconHandle icon) final { iconFor(document_, x, y, icon); }
    void text(int x, int y, std::string_view text, Colour foreground, Colour background, int font) final {
        textFor(document_, x, y, text, foreground, background, font);
    }
    void phasedLine(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style,
                    int phase) final {
        phasedLineFor(document_, x0, y0, x1, y1, colour, thickness, style, phase);
    }
    void fill(int x, int y, int w, int h, Colour colour) final { fillFor(document_, x, y, w, h, colour); }
    int scaleX(int x) const final { return scaleXFor(document_, x); }
    int scaleY(int y) const final { return scaleYFor(document_, y); }

    void setActive(bool active) { active_ = active; }

  protected:
    virtual void beginFor(Document&, int, int, int, int) {}
    virtual void endFor(Document&) {}
    virtual void lineFor(Document&, int, int, int, int, Colour, int, int) {}
    virtual void iconFor(Document&, int, int, IconHandle) {}
    virtual void textFor(Document&, int, int, std::string_view, Colour, Colour, int) {}
    virtual void phasedLineFor(Document&, int, int, int, int, Colour, int, int, int) {}
    virtual void fillFor(Document&, int, int, int, int, Colour) {}
    virtual int scaleXFor(Document&, int x) const { return x; }
    virtual int scaleYFor(Document&, int y) const { return y; }
    bool active() const { return active_; }

  private:
    Document& document_;
    bool active_;
};

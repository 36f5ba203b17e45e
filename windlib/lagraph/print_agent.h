// What stands between code that draws for the screen and a page: it takes each drawing call in pixels of the
// screen and draws it on the page in the page's measures.
#pragma once

#include <string_view>

#include "windlib/lagraph/surface.h"

class PrintAgent {
  public:
    virtual ~PrintAgent() = default;

    // False: drawing goes to the screen as ever.
    virtual bool Active() const = 0;
    // What is drawn until End stays inside this rectangle; nests.
    virtual void Begin(int x, int y, int w, int h) = 0;
    virtual void End() = 0;
    virtual void Line(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style) = 0;
    virtual void Icon(int x, int y, IconHandle icon) = 0;
    // The baseline's start; in a font slot.
    virtual void Text(int x, int y, std::string_view text, Colour foreground, Colour background,
                      int font) = 0;
    // A line whose dashes begin so many pixels into their pattern.
    virtual void PhasedLine(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style,
                            int phase) = 0;
    virtual void Fill(int x, int y, int w, int h, Colour colour) = 0;
    // The page's pixel of a pixel of the screen.
    virtual int ScaleX(int x) const = 0;
    virtual int ScaleY(int y) const = 0;
};

// An agent for a document, which its operations are given. What is not overridden draws nothing and leaves
// coordinates as they are. The document outlives it.
template <class Document>
class PrintAgentImpl : public PrintAgent {
  public:
    PrintAgentImpl(Document& document, bool active) : document_(document), active_(active) {}

    bool Active() const override { return true; }
    void Begin(int x, int y, int w, int h) final { BeginFor(document_, x, y, w, h); }
    void End() final { EndFor(document_); }
    void Line(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style) final {
        LineFor(document_, x0, y0, x1, y1, colour, thickness, style);
    }
    void Icon(int x, int y, IconHandle icon) final { IconFor(document_, x, y, icon); }
    void Text(int x, int y, std::string_view text, Colour foreground, Colour background, int font) final {
        TextFor(document_, x, y, text, foreground, background, font);
    }
    void PhasedLine(int x0, int y0, int x1, int y1, Colour colour, int thickness, int style,
                    int phase) final {
        PhasedLineFor(document_, x0, y0, x1, y1, colour, thickness, style, phase);
    }
    void Fill(int x, int y, int w, int h, Colour colour) final { FillFor(document_, x, y, w, h, colour); }
    int ScaleX(int x) const final { return ScaleXFor(document_, x); }
    int ScaleY(int y) const final { return ScaleYFor(document_, y); }

    void SetActive(bool active) { active_ = active; }

  protected:
    virtual void BeginFor(Document&, int, int, int, int) {}
    virtual void EndFor(Document&) {}
    virtual void LineFor(Document&, int, int, int, int, Colour, int, int) {}
    virtual void IconFor(Document&, int, int, IconHandle) {}
    virtual void TextFor(Document&, int, int, std::string_view, Colour, Colour, int) {}
    virtual void PhasedLineFor(Document&, int, int, int, int, Colour, int, int, int) {}
    virtual void FillFor(Document&, int, int, int, int, Colour) {}
    virtual int ScaleXFor(Document&, int x) const { return x; }
    virtual int ScaleYFor(Document&, int y) const { return y; }
    bool active() const { return active_; }

  private:
    Document& document_;
    bool active_;
};

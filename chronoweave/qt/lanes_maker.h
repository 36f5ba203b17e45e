// Makes the lane index of the store of a picture that has none, when nothing else is to be done.
#pragma once

#include <QTimer>
#include <functional>
#include <optional>

class PictureView;

class LanesMaker : public QObject {
  public:
    // tell is given the share that is done, and nothing once it is over.
    using Tell = std::function<void(std::optional<double> share)>;
    LanesMaker(PictureView& view, Tell tell, QObject* parent);
    ~LanesMaker() override;
    // The picture shows another store. One that still grows gets its index from whoever reads it.
    void begin();

  private:
    void step();

    PictureView& view_;
    Tell tell_;
    QTimer later_;  // the next slice
};

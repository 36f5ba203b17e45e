// A counter that is up by one as long as this lives.
#pragma once

class Raised {
  public:
    // The counter outlives it.
    explicit Raised(int& counter) : counter_(counter) { ++counter_; }
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;
    ~Raised() { --counter_; }

  private:
    int& counter_;
};

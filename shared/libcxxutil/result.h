// What came of something that can fail: that it went well, or what failed, where and why, in words for the
// user. Whoever can tell the user does, once; everyone between hands it on.
#pragma once

#include <memory>
#include <string>

class [[nodiscard]] Result {
  public:
    Result() = default;  // it went well

    // where is a file, a place within one, or a peer; reason is what lies behind, often the system's words.
    // Either may be empty.
    static Result failure(std::string what, std::string where = {}, std::string reason = {});
    // A call of the operating system failed with this error number, at where. 0 stands for a call that says
    // no more than that it did not do what was asked.
    static Result system(std::string where, int error, std::string what = {});
    // The same failure as one that ends what was begun: it is told alone, whatever else there may be to say.
    Result fatal() &&;

    bool ok() const { return failure_ == nullptr; }
    explicit operator bool() const { return ok(); }
    // Empty when it went well.
    const std::string& what() const;
    const std::string& where() const;
    const std::string& reason() const;
    bool IsFatal() const { return failure_ && failure_->fatal; }
    // "where: what: reason" of the parts that there are; empty when it went well.
    std::string text() const;

  private:
    struct Failure {
        std::string what, where, reason;
        bool fatal = false;
    };
    std::shared_ptr<Failure> failure_;
};

// The first that failed of two, so that a row of steps that must all be taken tells the first cause.
Result result_First(Result first, Result second);
// What failed of two things that were both done, one sentence a line.
Result result_Both(Result first, Result second);

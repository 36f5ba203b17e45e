// Two courses of one thread that take turns: a test runs two peers that wait for each other, in an order that
// a seed decides.
#pragma once

#include <ucontext.h>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#include <sanitizer/common_interface_defs.h>
#endif

class Fiber {
  public:
    explicit Fiber(std::function<void()> run) : run_(std::move(run)), stack_(takeStack()) {
        getcontext(&own_);
        own_.uc_stack.ss_sp = stack_.get();
        own_.uc_stack.ss_size = stackBytes;
        own_.uc_link = nullptr;
        const auto address = reinterpret_cast<uintptr_t>(this);
        makecontext(&own_, reinterpret_cast<void (*)()>(&Fiber::start), 2,
                    static_cast<unsigned>(address >> 32), static_cast<unsigned>(address));
        // Needed no more. The address sanitizer would clear what it knows of the whole stack at every turn.
        own_.uc_stack = {};
    }
    Fiber(const Fiber&) = delete;
    Fiber& operator=(const Fiber&) = delete;

    ~Fiber() { freeStacks().push_back(std::move(stack_)); }

    bool ended() const { return ended_; }
    // Runs it until it pauses or ends.
    void resume() { enter(own_, caller_, stack_.get(), stackBytes); }
    // Called from within: back to whoever resumed it.
    void pause() { enter(caller_, own_, outside_, outsideBytes_); }

  private:
    static constexpr size_t stackBytes = size_t{1} << 20;

    // Stacks are used again: a model makes tens of thousands of them.
    static std::vector<std::unique_ptr<char[]>>& freeStacks() {
        static std::vector<std::unique_ptr<char[]>> stacks;
        return stacks;
    }
    static std::unique_ptr<char[]> takeStack() {
        if (freeStacks().empty()) return std::unique_ptr<char[]>(new char[stackBytes]);
        std::unique_ptr<char[]> stack = std::move(freeStacks().back());
        freeStacks().pop_back();
#if defined(__SANITIZE_ADDRESS__)
        // What ran there may have been left in the middle.
        __asan_unpoison_memory_region(stack.get(), stackBytes);
#endif
        return stack;
    }

    static void start(unsigned high, unsigned low) {
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        auto* const fiber = reinterpret_cast<Fiber*>(uintptr_t{high} << 32 | low);
        fiber->arrived(nullptr);
        fiber->run_();
        fiber->ended_ = true;
        fiber->pause();
    }
    // The sanitizer is told of the change of stacks.
    void enter(ucontext_t& to, ucontext_t& from, const void* stack, size_t bytes) {
        void* fake = nullptr;
#if defined(__SANITIZE_ADDRESS__)
        __sanitizer_start_switch_fiber(&fake, stack, bytes);
#else
        static_cast<void>(stack);
        static_cast<void>(bytes);
#endif
        swapcontext(&from, &to);
        arrived(fake);
    }
    void arrived(void* fake) {
#if defined(__SANITIZE_ADDRESS__)
        const void* stack = nullptr;
        size_t bytes = 0;
        __sanitizer_finish_switch_fiber(fake, &stack, &bytes);
        if (stack != stack_.get()) {
            outside_ = stack;
            outsideBytes_ = bytes;
        }
#else
        static_cast<void>(fake);
#endif
    }

    std::function<void()> run_;
    std::unique_ptr<char[]> stack_;
    ucontext_t own_{}, caller_{};
    const void* outside_ = nullptr;
    size_t outsideBytes_ = 0;
    bool ended_ = false;
};

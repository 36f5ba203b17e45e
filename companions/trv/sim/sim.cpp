#include "companions/trv/sim/sim.h"

#include <utility>

#include "companions/trv/server/words.h"
#include "companions/trv/sim/simulation.h"
#include "shared/libcxxutil/report.h"
#include "shared/libcxxutil/text.h"

const char sim_Usage[] =
    "sim [TASKS [RATE [SEED]]] a simulated system: 8 tasks and 2000 events a second when nothing is said";

namespace {

using namespace std::chrono_literals;
constexpr auto step_time = 10ms;
constexpr size_t most_at_once = 10'000;

class Sim : public Target {
  public:
    Sim(TargetFacts facts, const SimSize& size) : facts_(std::move(facts)), simulation_(size) {}

    const TargetFacts& facts() const override { return facts_; }
    Result start(Instant now) override {
        began_ = now - passed_;
        return {};
    }
    TargetPoll poll(Instant now, RawWriter& out) override {
        passed_ = now - began_;
        const bool isAll = simulation_.run(time(), most_at_once, out);
        return {isAll ? TargetPoll::State::Waiting : TargetPoll::State::More, now + step_time, 0, {}};
    }
    // Its time stands while nothing is logged.
    TargetPoll stop(Instant now, RawWriter& out) override { return poll(now, out); }
    std::vector<std::string> info() const override;

  private:
    SimTime time() const {
        return static_cast<SimTime>(std::chrono::duration_cast<std::chrono::nanoseconds>(passed_).count());
    }

    TargetFacts facts_;
    Simulation simulation_;
    Instant began_{};
    Instant::duration passed_{};
};

std::vector<std::string> Sim::info() const {
    std::vector<std::string> lines;
    for (const SimProcessor& processor : simulation_.processors()) {
        const auto accounts = processor.accounts();
        SimTime all = 0;
        for (const auto& account : accounts) all += account.ran;
        const double idle =
            all > 0 ? 100.0 * static_cast<double>(accounts[0].ran) / static_cast<double>(all) : 100;
        lines.push_back(gen_format(
            "Processor %u: %zu tasks, %.0f %% idle, %llu deadlines missed, %llu priority inversions",
            accounts[0].id, accounts.size() - 1, idle, static_cast<unsigned long long>(processor.missed()),
            static_cast<unsigned long long>(processor.inversions())));
    }
    return lines;
}

Result wrong(const char* what, const std::string& word) {
    return Result::failure(what, "", "not " + word);
}

Result read_size(std::string_view text, SimSize& size) {
    std::vector<std::string> words;
    if (Result split = words_Split(text, words); !split) return split;
    if (words.size() > 3) return Result::failure("sim takes tasks, rate and seed, and no more");
    if (!words.empty()) {
        const auto tasks = scan_number(words[0]);
        if (!tasks || *tasks == 0 || *tasks > SimSize::mostTasks)
            return wrong("the number of tasks is one from 1 to 10000", words[0]);
        size.tasks = static_cast<uint32_t>(*tasks);
    }
    if (words.size() > 1) {
        const auto rate = scan_double(words[1]);
        if (!rate || !(*rate >= 1 && *rate <= SimSize::mostRate))
            return wrong("the events a second are from 1 to 5000000", words[1]);
        size.rate = *rate;
    }
    if (words.size() > 2) {
        const auto seed = scan_number(words[2]);
        if (!seed) return wrong("the seed is a whole number", words[2]);
        size.seed = *seed;
    }
    return {};
}

}  // namespace

Result sim_Connect(std::string_view text, std::unique_ptr<Target>& target) {
    SimSize size;
    if (Result read = read_size(text, size); !read) return read;
    const std::string name =
        gen_format("sim %u %.0f %llu", size.tasks, size.rate, static_cast<unsigned long long>(size.seed));
    target = std::make_unique<Sim>(target_NanosecondFacts(name), size);
    return {};
}

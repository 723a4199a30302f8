// The LU factorization of a band in blocks of columns, on one thread and on a team.
//
// On a team thread 0 factors all panels, a step ahead: it first brings the next panel's columns up to date with the
// present one and then factors them, while the others update the rest. These columns go in strips that whoever is free
// claims, thread 0 from the front and the others from the back: as the band goes on, a column is the others' first and
// thread 0's in the end. A strip's bits do not depend on who computes it.
#include "lapack/kernel/source/band/gbtrf_blocked.hpp"
#include "lapack/task_team.hpp"

namespace qrv::lapack {
namespace {

// Columns of a strip: 64 and 96 took 0.98 to 1.05 of the time.
constexpr int stripWidth = 32;

int factor_alone(BlockedBand& x) {
    for (BlockedBand::Block b = x.block(0); b.jb > 0; b = x.block(b.end())) {
        x.clear_fills(b);
        if (!x.factor_panel(b))
            break;
        x.update_columns(b, {0, b.j2});
        x.update_corner(b);
    }
    return x.info();
}

// The job of a TaskTeam. A step is over when all its tasks are; so the tasks of one step read the present panel, and
// one of them writes the next.
class BandTeam {
public:
    struct Task {
        enum class Kind { none, nextPanel, corner, strip, end };
        Kind kind = Kind::none;
        int strip = 0;
        bool waits() const { return kind == Kind::none; }
        bool ends() const { return kind == Kind::end; }
    };

    // The first panel is factored.
    BandTeam(BlockedBand& x, const BlockedBand::Block& first) : x_(x), next_(first) {}

    void begin(int) { begin_step(); }
    Task first(int) const { return {}; }
    void next(int thread, Task& task) {
        if (!task.waits())
            --open_;
        if (open_ == 0 && next_.jb > 0)
            begin_step();
        task = open_ == 0 ? Task{Kind::end} : claim(thread);
    }
    bool perform(const Task& task, int) {
        const int first = head_ + task.strip * stripWidth;
        switch (task.kind) {
        case Kind::nextPanel:
            return prepare_next();
        case Kind::corner:
            if (!cornerFirst_)
                x_.update_corner(now_);
            x_.clear_fills(next_);
            break;
        default:
            x_.update_columns(now_, {first, std::min(stripWidth, now_.j2 - first)});
        }
        return true;
    }

private:
    using Kind = Task::Kind;

    void begin_step() {
        now_ = next_;
        next_ = x_.block(now_.end());
        head_ = std::min(next_.jb, now_.j2);
        cornerFirst_ = head_ < next_.jb;
        panelIsFree_ = cornerIsFree_ = true;
        strips_ = {0, (now_.j2 - head_ + stripWidth - 1) / stripWidth};
        open_ = 2 + strips_.count;
    }

    Task claim(int thread) {
        if (thread == 0 && panelIsFree_) {
            panelIsFree_ = false;
            return {Kind::nextPanel};
        }
        if (cornerIsFree_ && (thread > 0 || strips_.count == 0)) {
            cornerIsFree_ = false;
            return {Kind::corner};
        }
        if (strips_.count == 0)
            return {};
        --strips_.count;
        return {Kind::strip, thread == 0 ? strips_.first++ : strips_.first + strips_.count};
    }

    bool prepare_next() {
        x_.update_columns(now_, {0, head_});
        if (cornerFirst_)
            x_.update_corner(now_);
        return next_.jb == 0 || x_.factor_panel(next_);
    }

    BlockedBand& x_;
    BlockedBand::Block now_{}, next_;
    int head_ = 0;             // columns of the next panel that are not in the corner
    bool cornerFirst_ = false; // some are
    bool panelIsFree_ = false, cornerIsFree_ = false;
    Slice strips_{}; // free ones
    int open_ = 0;   // tasks that are not finished
};

int factor_on_team(BlockedBand& x, int threads) {
    BlockedBand::Block first = x.block(0);
    x.clear_fills(first);
    if (x.factor_panel(first)) {
        BandTeam job(x, first);
        TaskTeam<BandTeam>(job).run(threads);
    }
    return x.info();
}

} // namespace

int gbtrf_blocked(int threads, int nb, const char* stage, const BandShape& shape, Matrix<float> a, int* ipiv) {
    BlockedBand x(nb, stage, shape, a, ipiv);
    if (!x)
        return gbtrf_unblocked(shape, a, ipiv);
    x.clear_first_fills();
    return threads == 1 ? factor_alone(x) : factor_on_team(x, threads);
}

} // namespace qrv::lapack

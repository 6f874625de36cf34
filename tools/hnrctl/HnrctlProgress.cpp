#include "HnrctlProgress.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <ostream>

namespace hnrctl {

namespace {

double steadySeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

std::string rateText(double bytesPerSecond)
{
    const char* units[] = {"B/s", "kB/s", "MB/s", "GB/s"};
    int unit = 0;
    while (bytesPerSecond >= 1000 && unit < 3) {
        bytesPerSecond /= 1000;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.2f%s", bytesPerSecond, units[unit]);
    return text;
}

std::string durationText(double seconds)
{
    long long s = static_cast<long long>(seconds + 0.5);
    char text[32];
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", s / 3600, s / 60 % 60, s % 60);
    return text;
}

} // namespace

HnrctlProgress::HnrctlProgress(std::ostream& out, const std::string& label, bool terminal)
    : Progress(1), out_(out), label_(label), terminal_(terminal)
{
}

HnrctlProgress::HnrctlProgress(std::ostream& out, const std::string& label, bool terminal, std::uint64_t totalBytes,
                               Clock clock)
    : Progress(1), out_(out), label_(label), terminal_(terminal), total_(totalBytes),
      clock_(clock ? clock : Clock(steadySeconds))
{
    started_ = clock_();
}

std::string HnrctlProgress::groupDigits(std::uint64_t value)
{
    std::string digits = std::to_string(value);
    std::string text;
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0)
            text += ',';
        text += digits[i];
    }
    return text;
}

void HnrctlProgress::start() { setProgress(0); }

void HnrctlProgress::setProgress(double percent)
{
    if (!(percent >= 0)) // NaN as well
        percent = 0;
    if (percent > 100)
        percent = 100;
    // Shown with one decimal; an update that would not change the text is dropped.
    double rounded = std::floor(percent * 10) / 10;
    if (rounded <= last_)
        return;
    last_ = rounded;
    show(rounded);
}

void HnrctlProgress::show(double percent)
{
    char text[16];
    std::snprintf(text, sizeof text, "%5.1f%%", percent);
    std::string line = label_ + ": " + text;
    if (total_ > 0) {
        std::uint64_t done = static_cast<std::uint64_t>(static_cast<double>(total_) * percent / 100);
        if (done > total_)
            done = total_;
        double elapsed = clock_() - started_;
        line += "  " + groupDigits(done) + " of " + groupDigits(total_) + " bytes";
        if (elapsed > 0 && done > 0) {
            double rate = static_cast<double>(done) / elapsed;
            line += "  " + rateText(rate) + "  " + durationText(static_cast<double>(total_ - done) / rate) + " left";
        } else {
            line += "  --  -:--:-- left";
        }
    }
    if (terminal_)
        out_ << "\r" << line << (total_ > 0 ? "\x1b[K" : "") << std::flush; // the line may shrink
    else
        out_ << line << "\n" << std::flush;
}

void HnrctlProgress::finish()
{
    if (terminal_ && last_ >= 0)
        out_ << "\n" << std::flush;
}

} // namespace hnrctl

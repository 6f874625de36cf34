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
    : Progress(1), m_out(out), m_label(label), m_terminal(terminal)
{
}

HnrctlProgress::HnrctlProgress(std::ostream& out, const std::string& label, bool terminal, std::uint64_t totalBytes,
                               Clock clock)
    : Progress(1), m_out(out), m_label(label), m_terminal(terminal), m_total(totalBytes),
      m_clock(clock ? clock : Clock(steadySeconds))
{
    m_started = m_clock();
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
    if (rounded <= m_last)
        return;
    m_last = rounded;
    show(rounded);
}

void HnrctlProgress::show(double percent)
{
    char text[16];
    std::snprintf(text, sizeof text, "%5.1f%%", percent);
    std::string line = m_label + ": " + text;
    if (m_total > 0) {
        std::uint64_t done = static_cast<std::uint64_t>(static_cast<double>(m_total) * percent / 100);
        if (done > m_total)
            done = m_total;
        double elapsed = m_clock() - m_started;
        line += "  " + groupDigits(done) + " of " + groupDigits(m_total) + " bytes";
        if (elapsed > 0 && done > 0) {
            double rate = static_cast<double>(done) / elapsed;
            line += "  " + rateText(rate) + "  " + durationText(static_cast<double>(m_total - done) / rate) + " left";
        } else {
            line += "  --  -:--:-- left";
        }
    }
    if (m_terminal)
        m_out << "\r" << line << (m_total > 0 ? "\x1b[K" : "") << std::flush; // the line may shrink
    else
        m_out << line << "\n" << std::flush;
}

void HnrctlProgress::finish()
{
    if (m_terminal && m_last >= 0)
        m_out << "\n" << std::flush;
}

} // namespace hnrctl

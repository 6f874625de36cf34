#include "HnrctlProgress.h"

#include <cmath>
#include <cstdio>
#include <ostream>

namespace hnrctl {

HnrctlProgress::HnrctlProgress(std::ostream& out, const std::string& label, bool terminal)
    : Progress(1), m_out(out), m_label(label), m_terminal(terminal)
{
}

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
    char text[16];
    std::snprintf(text, sizeof text, "%5.1f%%", rounded);
    if (m_terminal)
        m_out << "\r" << m_label << ": " << text << std::flush;
    else
        m_out << m_label << ": " << text << "\n" << std::flush;
}

void HnrctlProgress::finish()
{
    if (m_terminal && m_last >= 0)
        m_out << "\n" << std::flush;
}

} // namespace hnrctl

#pragma once
// Transfer progress of hnrctl share put/get, on the error stream: one line
// redrawn with '\r' on a terminal, one line per update otherwise. The shown
// percentage never goes down and never passes 100.
#include "share/HNRShare.h"

#include <iosfwd>
#include <string>

namespace hnrctl {

class HnrctlProgress : public HNR::HNRShareConnection::Progress {
public:
    HnrctlProgress(std::ostream& out, const std::string& label, bool terminal);
    void setProgress(double percent) override;
    // Ends the redrawn line on a terminal; call once the transfer is over.
    void finish();
    // The last percentage shown, -1 before the first.
    double lastShown() const { return m_last; }

private:
    std::ostream& m_out;
    std::string m_label;
    bool m_terminal;
    double m_last = -1;
};

} // namespace hnrctl

#pragma once
// hnrctl message check / read.
namespace hnrctl {

class HnrctlCommandLine;
struct HnrctlContext;

int runMessageCheck(const HnrctlCommandLine& line, HnrctlContext& context);
int runMessageRead(const HnrctlCommandLine& line, HnrctlContext& context);

} // namespace hnrctl

#pragma once
// hnrctl message check / read / dump / diff.
namespace hnrctl {

class HnrctlCommandLine;
struct HnrctlContext;

int runMessageCheck(const HnrctlCommandLine& line, HnrctlContext& context);
int runMessageRead(const HnrctlCommandLine& line, HnrctlContext& context);
int runMessageDump(const HnrctlCommandLine& line, HnrctlContext& context);
int runMessageDiff(const HnrctlCommandLine& line, HnrctlContext& context);

} // namespace hnrctl

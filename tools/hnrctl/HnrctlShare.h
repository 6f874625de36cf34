#pragma once
// hnrctl share ...: the share client's static operations.
namespace hnrctl {

class HnrctlCommandLine;
struct HnrctlContext;

int runShareCheck(const HnrctlCommandLine& line, HnrctlContext& context);
int runShareLs(const HnrctlCommandLine& line, HnrctlContext& context);
int runSharePut(const HnrctlCommandLine& line, HnrctlContext& context);
int runShareGet(const HnrctlCommandLine& line, HnrctlContext& context);
int runShareSize(const HnrctlCommandLine& line, HnrctlContext& context);
int runShareMkdir(const HnrctlCommandLine& line, HnrctlContext& context);
int runShareRmdir(const HnrctlCommandLine& line, HnrctlContext& context);
int runShareUrl(const HnrctlCommandLine& line, HnrctlContext& context);
int runShareUnc(const HnrctlCommandLine& line, HnrctlContext& context);

} // namespace hnrctl

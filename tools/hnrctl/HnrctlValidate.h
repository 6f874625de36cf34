#pragma once
// hnrctl message validate: checks messages against the module's schema.
namespace hnrctl {

class HnrctlCommandLine;
struct HnrctlContext;

// Exit 0 when every FILE is valid, 1 when one is not, 2 when one cannot be
// read or the schema cannot be found or loaded.
int runMessageValidate(const HnrctlCommandLine& line, HnrctlContext& context);

} // namespace hnrctl

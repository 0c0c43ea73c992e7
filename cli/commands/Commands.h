#pragma once

#include <cli/shell/Command.h>

#include <span>

namespace qrv::cli {

/// In the order in which the help lists them.
std::span<const Command> commands();

Action declareAdd(const ArgumentParser& parser);
Action declareBranch(const ArgumentParser& parser);
Action declareCommit(const ArgumentParser& parser);
Action declareConfig(const ArgumentParser& parser);
Action declareCompletion(const ArgumentParser& parser);
Action declareConvert(const ArgumentParser& parser);
Action declareDiff(const ArgumentParser& parser);
Action declareFiles(const ArgumentParser& parser);
Action declareGc(const ArgumentParser& parser);
Action declareIgnore(const ArgumentParser& parser);
Action declareInit(const ArgumentParser& parser);
Action declareLocate(const ArgumentParser& parser);
Action declareLog(const ArgumentParser& parser);
Action declareLogNote(const ArgumentParser& parser);
Action declareManual(const ArgumentParser& parser);
Action declareMerge(const ArgumentParser& parser);
Action declareName(const ArgumentParser& parser);
Action declareProjects(const ArgumentParser& parser);
Action declareResolve(const ArgumentParser& parser);
Action declareRecover(const ArgumentParser& parser);
Action declareRestore(const ArgumentParser& parser);
Action declareShow(const ArgumentParser& parser);
Action declareState(const ArgumentParser& parser);
Action declareStatus(const ArgumentParser& parser);
Action declareSwitch(const ArgumentParser& parser);
Action declareTag(const ArgumentParser& parser);
Action declareUnstage(const ArgumentParser& parser);
Action declareVerify(const ArgumentParser& parser);

}  // namespace qrv::cli

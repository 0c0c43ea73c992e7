#include <engine/database/Database.h>
#include <engine/maintenance/Findings.h>

#include <algorithm>
#include <vector>

namespace qrv {

void Findings::attempt(const std::function<void()>& step) {
    try {
        step();
    } catch (const DatabaseError& error) {
        addProblem(error.description());
    }
}

void Findings::addProblem(const OdString& problem) {
    std::vector<OdString>& problems = found_.problems;
    if (std::find(problems.begin(), problems.end(), problem) == problems.end())
        problems.push_back(problem);
}

}  // namespace qrv

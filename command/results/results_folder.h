// The folder of results that a run leaves.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "evaluation.h"
#include "replaceable.h"
#include "results.h"
#include "staging.h"

namespace kesto {

struct ResultsFormat {
    std::string name;  // "csv" or "netcdf"
    bool hasBalance = false;
    int compression = 1;  // of NetCDF
};

class ResultsFolder {
  public:
    // Makes the folder unless it is there, and keeps other runs out of it for as long as this lives. What a run that
    // was killed has left is put right. Throws FolderBusy, NotReplaceable, or std::runtime_error when nothing can be
    // written. `inputs` are the files that the run reads.
    ResultsFolder(const std::string& path, const ResultsFormat& format, std::vector<std::string> inputs);

    // Called in a child process that writes: the folder is then kept until that has ended, too.
    void stayLocked() { staging_->stayLocked(); }

    // Writes all files of the run in place of those of an earlier one. All or nothing: when it throws, the folder holds
    // what it held before, or a STOPPED.txt that says otherwise.
    std::vector<WrittenFile> write(const Results& results, const Evaluation& evaluation);

  private:
    std::vector<WrittenFile> stage(const Results& results, const Evaluation& evaluation);
    void readSummary();
    void finishMoves();
    void expectReplaceable(const std::vector<std::string>& names) const;
    bool isOurs(const std::string& name) const;
    std::vector<WrittenFile> ownFiles() const;

    std::string path_;
    ResultsFormat format_;
    std::vector<std::string> inputs_;
    std::unique_ptr<Staging> staging_;
    std::vector<WrittenFile> old_;  // of earlier runs, their summary too
};

}  // namespace kesto

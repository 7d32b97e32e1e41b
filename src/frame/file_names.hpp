// Names of a run's files: no result may be written over another file of the run.
//
// Called by the programs when the table of files is read, before anything is written, and by the
// writers of record files.
#pragma once

#include <span>
#include <string>

#include "frame/log.hpp"
#include "frame/unit_table.hpp"

namespace frame {

/// A file of a run, as its table tells it.
struct NamedFile {
  std::string title;  ///< what it is called on the log
  std::string name;   ///< as the user gave it
  std::string path;   ///< where it is
  bool output = false;
};

/// What a file is called on the log, from its label: without the colon and the padding.
std::string title_of(std::string_view label);

/// The file that a name stands for, links followed.
std::string link_target(const std::string& name);

/// True for what is there and no plain file (/dev/null): it is written to, never replaced.
bool is_device(const std::string& path);

/// What tells a file from all others: two paths to one file, be it there or not, have the same.
/// Empty for a device.
std::string identity(const std::string& path);

/// Whether two paths lead, or would lead, to the same file. Devices may serve several times.
bool same_file(const std::string& a, const std::string& b);

/// No output may be another file of the table, the log, or the file `table` that tells the names.
/// A data error naming both files.
void check_outputs(Log& log, const UnitTable& units, const std::string& table,
                   std::span<const NamedFile> files);

}  // namespace frame

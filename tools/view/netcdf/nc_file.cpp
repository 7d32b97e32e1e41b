#include "netcdf/nc_file.hpp"

#include <netcdf.h>

#include <algorithm>
#include <array>

#include "fault.hpp"

namespace townskin_view {

void NcFile::check(int status) const {
  if (status != NC_NOERR) throw Fault("cannot write " + path_ + ": " + nc_strerror(status));
}

NcFile::NcFile(const std::string& path) : path_(path) {
  // Chunks are written whole and once: the library is to keep as good as none of them.
  check(nc_set_chunk_cache(1 << 16, 11, 1.0F));
  check(nc_create(path.c_str(), NC_NETCDF4 | NC_CLOBBER, &id_));
  int before = 0;
  check(nc_set_fill(id_, NC_NOFILL, &before));  // every value is written
}

NcFile::~NcFile() {
  if (id_ >= 0) nc_close(id_);
}

void NcFile::close() {
  const int id = id_;
  id_ = -1;
  check(nc_close(id));
}

int NcFile::dimension(const std::string& name, std::size_t size) {
  int id = 0;
  check(nc_def_dim(id_, name.c_str(), size, &id));
  return id;
}

int NcFile::variable(const std::string& name, int type, const std::vector<int>& dimensions) {
  constexpr std::size_t kWorthIt = 1024;  // values; compressing less only costs time
  int id = 0;
  check(nc_def_var(id_, name.c_str(), type, static_cast<int>(dimensions.size()), dimensions.data(),
                   &id));
  std::vector<std::size_t> chunk;
  std::size_t all = 1;
  for (const int dimension : dimensions) {
    std::size_t size = 0;
    check(nc_inq_dimlen(id_, dimension, &size));
    chunk.push_back(size);
    all *= size;
  }
  if (all < kWorthIt) return id;
  constexpr std::size_t kMostOfAChunk = 1 << 20;
  if (chunk.size() > 1) {
    chunk[0] = type == NC_INT ? std::min<std::size_t>(chunk[0], 4096) : 1;
  } else {
    chunk[0] = std::min(chunk[0], kMostOfAChunk);
  }
  chunk.back() = std::min(chunk.back(), kMostOfAChunk);
  check(nc_def_var_chunking(id_, id, NC_CHUNKED, chunk.data()));
  check(nc_def_var_deflate(id_, id, 1, 1, 1));
  return id;
}

void NcFile::text(int variable, const char* name, std::string_view value) {
  if (value.empty()) return;
  check(nc_put_att_text(id_, variable, name, value.size(), value.data()));
}
void NcFile::number(int variable, const char* name, double value) {
  check(nc_put_att_double(id_, variable, name, NC_DOUBLE, 1, &value));
}
void NcFile::number(int variable, const char* name, std::int32_t value) {
  check(nc_put_att_int(id_, variable, name, NC_INT, 1, &value));
}
void NcFile::bytes(int variable, const char* name, std::span<const signed char> values) {
  check(nc_put_att_schar(id_, variable, name, NC_BYTE, values.size(), values.data()));
}
void NcFile::fill(int variable, float value) {
  check(nc_def_var_fill(id_, variable, NC_FILL, &value));
}
void NcFile::fill(int variable, std::int32_t value) {
  check(nc_def_var_fill(id_, variable, NC_FILL, &value));
}

void NcFile::end_definitions() { check(nc_enddef(id_)); }

void NcFile::put(int variable, std::span<const float> values) {
  check(nc_put_var_float(id_, variable, values.data()));
}
void NcFile::put(int variable, std::span<const double> values) {
  check(nc_put_var_double(id_, variable, values.data()));
}
void NcFile::put(int variable, std::span<const std::int32_t> values) {
  check(nc_put_var_int(id_, variable, values.data()));
}
void NcFile::put(int variable, std::span<const signed char> values) {
  check(nc_put_var_schar(id_, variable, values.data()));
}
void NcFile::put_hour(int variable, std::size_t hour, std::span<const float> values) {
  const std::array<std::size_t, 2> start{hour, 0}, count{1, values.size()};
  check(nc_put_vara_float(id_, variable, start.data(), count.data(), values.data()));
}
void NcFile::put_rows(int variable, std::size_t first, std::size_t width,
                      std::span<const std::int32_t> values) {
  const std::array<std::size_t, 2> start{first, 0}, count{values.size() / width, width};
  check(nc_put_vara_int(id_, variable, start.data(), count.data(), values.data()));
}

}  // namespace townskin_view

// The Fortran procedures of callers.f90: qx_ calls ours, gnu_ the compiler's own.
#ifndef QXPORT_BENCH_CALLERS_H
#define QXPORT_BENCH_CALLERS_H

#include <cstddef>
#include <cstdint>

extern "C" {

int32_t qx_access_(const char *name, const char *mode, size_t name_len, size_t mode_len);
int32_t gnu_access_(const char *name, const char *mode, size_t name_len, size_t mode_len);
int32_t qx_chdir_(const char *name, size_t name_len);
int32_t gnu_chdir_(const char *name, size_t name_len);
int32_t qx_stat_(const char *name, int32_t *values, size_t name_len);
int32_t gnu_stat_(const char *name, int32_t *values, size_t name_len);
int32_t qx_lstat_(const char *name, int32_t *values, size_t name_len);
int32_t gnu_lstat_(const char *name, int32_t *values, size_t name_len);
int32_t qx_getcwd_(char *name, size_t name_len);
int32_t gnu_getcwd_(char *name, size_t name_len);
void qx_getenv_(const char *name, char *value, size_t name_len, size_t value_len);
void gnu_getenv_(const char *name, char *value, size_t name_len, size_t value_len);
int32_t qx_lnblnk_(const char *text, size_t text_len);
int32_t gnu_len_trim_(const char *text, size_t text_len);
int32_t qx_rindex_(const char *text, const char *part, size_t text_len, size_t part_len);
int32_t gnu_index_back_(const char *text, const char *part, size_t text_len, size_t part_len);
int32_t qx_count_characters_(const int32_t *unit);
int32_t gnu_count_characters_(const int32_t *unit);
int32_t qx_read_characters_(const int32_t *unit);
int32_t gnu_read_characters_(const int32_t *unit);
int32_t qx_write_characters_(const int32_t *unit, const int32_t *count);
int32_t gnu_write_characters_(const int32_t *unit, const int32_t *count);
void open_for_writing_(const int32_t *unit, const char *path, size_t path_len);
void open_for_reading_(const int32_t *unit, const char *path, size_t path_len);
int32_t open_new_unit_for_reading_(const char *path, size_t path_len);
void qx_idate_(int32_t *values);
void gnu_idate_(int32_t *values);
void qx_itime_(int32_t *values);
void gnu_itime_(int32_t *values);
void qx_ltime_(const int32_t *instant, int32_t *values);
void gnu_ltime_(const int32_t *instant, int32_t *values);
void qx_gmtime_(const int32_t *instant, int32_t *values);
void gnu_gmtime_(const int32_t *instant, int32_t *values);
void qx_ctime_(const int32_t *instant, char *text, size_t text_len);
void gnu_ctime_(const int32_t *instant, char *text, size_t text_len);
void qx_fdate_(char *text, size_t text_len);
void gnu_fdate_(char *text, size_t text_len);
float qx_etime_(float *elements);
float gnu_etime_(float *elements);
float qx_secnds_(const float *t);
float gnu_secnds_(const float *t);
float qx_sum_of_rand_(const int32_t *draws);
float gnu_sum_of_rand_(const int32_t *draws);
float gnu_sum_of_random_number_4_(const int32_t *draws);
double qx_sum_of_drand_(const int32_t *draws);
double gnu_sum_of_random_number_8_(const int32_t *draws);
int32_t qx_sum_of_irand_(const int32_t *draws);
float qx_sum_of_ran_(const int32_t *draws);

}  // extern "C"

#endif

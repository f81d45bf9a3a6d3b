// The benchmarks of each topic, in the order in which the table shows them.
#pragma once

namespace tarv_bench {

void add_ref_count_ptr_rows();
void add_source_string_rows();
void add_error_code_rows();
void add_error_params_rows();
void add_error_info_rows();
void add_error_exception_rows();
void add_ucsutil_rows();
void add_transforms_rows();
void add_abs_rel_time_rows();
void add_calendar_rows();
void add_absolute_time_text_rows();
void add_relative_time_text_rows();
void add_simple_date_time_rows();
void add_thread_mutex_rows();
void add_static_instance_rows();
void add_process_info_rows();
void add_random_rows();
void add_cpu_info_rows();
void add_time_provider_rows();
void add_future_rows();
void add_result_rows();
void add_murmur_hash_rows();
void add_uuid_rows();
void add_object_key_rows();
void add_diagnostics_impl_win_common_rows();

}  // namespace tarv_bench

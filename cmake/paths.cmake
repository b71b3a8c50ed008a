# The one table of code paths (id, tag, compiler flags) and the helper that compiles a kernels/
# folder once per path. This is the only place in the build where -m flags appear.

set(TAV_PATHS def cnr_def mc mc3 avx avx2 avx512_tp avx512)

set(TAV_PATH_ID_def 0)
set(TAV_PATH_ID_cnr_def 1)
set(TAV_PATH_ID_mc 2)
set(TAV_PATH_ID_mc3 3)
set(TAV_PATH_ID_avx 4)
set(TAV_PATH_ID_avx2 5)
set(TAV_PATH_ID_avx512_tp 6)
set(TAV_PATH_ID_avx512 7)

set(TAV_BASELINE_FLAGS -march=x86-64 -mtune=generic)
set(TAV_PATH_FLAGS_def ${TAV_BASELINE_FLAGS})
set(TAV_PATH_FLAGS_cnr_def ${TAV_BASELINE_FLAGS} -ffp-contract=off)
set(TAV_PATH_FLAGS_mc ${TAV_BASELINE_FLAGS} -mssse3)
set(TAV_PATH_FLAGS_mc3 -march=x86-64-v2 -mtune=generic)
set(TAV_PATH_FLAGS_avx -march=x86-64-v2 -mavx -mtune=generic)
set(TAV_PATH_FLAGS_avx2 -march=x86-64-v3 -mtune=generic)
set(TAV_PATH_FLAGS_avx512_tp -march=x86-64-v3 -mavx512f -mavx512cd -mtune=generic)
set(TAV_PATH_FLAGS_avx512 -march=x86-64-v4 -mtune=generic)

# tav_add_path_kernels(<target> <family> <sources>...)
# Makes one OBJECT library per path, <family>_<tag>, compiled with the path's flags and with
# TAV_PATH=<tag>, TAV_PATH_ID=<id>, TAV_PATH_NS=path_<tag> defined, and links its objects into
# <target>. The target `libtav` stands for the library: its objects join both libtav.so and the
# static archive that unit tests link (see the top-level CMakeLists.txt).
function(tav_add_path_kernels target family)
  if(target STREQUAL "libtav")
    set(settings tav_objects)
  else()
    set(settings ${target})
  endif()
  foreach(tag IN LISTS TAV_PATHS)
    set(lib ${family}_${tag})
    add_library(${lib} OBJECT ${ARGN})
    target_compile_options(${lib} PRIVATE ${TAV_PATH_FLAGS_${tag}})
    target_compile_definitions(${lib} PRIVATE
      TAV_PATH=${tag} TAV_PATH_ID=${TAV_PATH_ID_${tag}} TAV_PATH_NS=path_${tag}
      $<TARGET_PROPERTY:${settings},COMPILE_DEFINITIONS>)
    target_include_directories(${lib} PRIVATE $<TARGET_PROPERTY:${settings},INCLUDE_DIRECTORIES>)
    set_target_properties(${lib} PROPERTIES POSITION_INDEPENDENT_CODE ON
      CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    if(target STREQUAL "libtav")
      set_property(GLOBAL APPEND PROPERTY TAV_KERNEL_OBJECTS $<TARGET_OBJECTS:${lib}>)
    else()
      target_sources(${target} PRIVATE $<TARGET_OBJECTS:${lib}>)
    endif()
  endforeach()
endfunction()

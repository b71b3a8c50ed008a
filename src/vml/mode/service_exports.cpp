// The exported mode, status and callback services under their C name and their two Fortran
// names (upper and lower case with a trailing underscore), all over one per-thread state.
#include <tav/tav_vml.h>

#include "common/exports.hpp"
#include "vml/mode/vml_state.hpp"

using namespace tav::vml;

TAV_EXPORT unsigned int vmlSetMode(unsigned int mode) { return change_mode(mode); }
TAV_EXPORT unsigned int vmlGetMode(void) { return current_mode(); }

TAV_EXPORT int vmlSetErrStatus(int status) { return set_error_status(status); }
TAV_EXPORT int vmlGetErrStatus(void) { return error_status(); }
TAV_EXPORT int vmlClearErrStatus(void) { return set_error_status(VML_STATUS_OK); }

TAV_EXPORT tav_vml_error_callback vmlSetErrorCallBack(tav_vml_error_callback callback) {
  return set_error_callback(callback);
}
TAV_EXPORT tav_vml_error_callback vmlGetErrorCallBack(void) { return error_callback(); }
TAV_EXPORT tav_vml_error_callback vmlClearErrorCallBack(void) {
  return set_error_callback(nullptr);
}

// The Fortran forms of the setters take their argument by reference. For the callback that is a
// pointer to the function pointer, the way a Fortran caller passes any argument; the previous
// callback comes back by value, as from the C form.
TAV_EXPORT unsigned int VMLSETMODE_(const unsigned int* mode) { return change_mode(*mode); }
TAV_EXPORT int VMLSETERRSTATUS_(const int* status) { return set_error_status(*status); }
TAV_EXPORT tav_vml_error_callback VMLSETERRORCALLBACK_(const tav_vml_error_callback* callback) {
  return set_error_callback(*callback);
}

TAV_EXPORT_ALIAS(vmlsetmode_, VMLSETMODE_);
TAV_EXPORT_ALIAS(vmlseterrstatus_, VMLSETERRSTATUS_);
TAV_EXPORT_ALIAS(vmlseterrorcallback_, VMLSETERRORCALLBACK_);

// The services without arguments have the same signature in both languages.
TAV_EXPORT_ALIAS(VMLGETMODE_, vmlGetMode);
TAV_EXPORT_ALIAS(vmlgetmode_, vmlGetMode);
TAV_EXPORT_ALIAS(VMLGETERRSTATUS_, vmlGetErrStatus);
TAV_EXPORT_ALIAS(vmlgeterrstatus_, vmlGetErrStatus);
TAV_EXPORT_ALIAS(VMLCLEARERRSTATUS_, vmlClearErrStatus);
TAV_EXPORT_ALIAS(vmlclearerrstatus_, vmlClearErrStatus);
TAV_EXPORT_ALIAS(VMLGETERRORCALLBACK_, vmlGetErrorCallBack);
TAV_EXPORT_ALIAS(vmlgeterrorcallback_, vmlGetErrorCallBack);
TAV_EXPORT_ALIAS(VMLCLEARERRORCALLBACK_, vmlClearErrorCallBack);
TAV_EXPORT_ALIAS(vmlclearerrorcallback_, vmlClearErrorCallBack);

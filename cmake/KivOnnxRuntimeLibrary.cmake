# Where tests look for ONNX Runtime when they run: the path in the environment of
# the configuration, else the one where tools/setup.sh puts it.
set(KIV_ONNXRUNTIME_LIBRARY "$ENV{KIV_ONNXRUNTIME}")
if(NOT KIV_ONNXRUNTIME_LIBRARY)
  set(cache "$ENV{XDG_CACHE_HOME}")
  if(NOT cache)
    set(cache "$ENV{HOME}/.cache")
  endif()
  set(KIV_ONNXRUNTIME_LIBRARY
    ${cache}/kiv-saver/onnxruntime-1.16.3/libonnxruntime.so.1.16.3)
endif()

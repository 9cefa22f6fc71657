# SPDX-License-Identifier: MIT
# Ends the configuration with one line; the leading blank keeps CMake from folding it.
function(vxclss_refuse text)
  message(FATAL_ERROR " vxclss: ${text}")
endfunction()

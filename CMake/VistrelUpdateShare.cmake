# Refuses a deployment of the update share that cannot be trusted or cannot work. What comes from that
# share is started as root, so it comes over an encrypted connection or not at all. Values that are
# empty mean that there is no share. Also runs by itself: cmake -DVISTREL_UPDATE_...=... -P FILE.
function(vistrel_check_update_share baseUrl resourcePrefix accountKey)
    set(host "[A-Za-z0-9]([A-Za-z0-9.-]*[A-Za-z0-9])?")
    if(NOT baseUrl STREQUAL ""
            AND NOT baseUrl MATCHES "^https://${host}(:[0-9]+)?/([A-Za-z0-9._~%-]+/)*$")
        message(FATAL_ERROR "VISTREL_UPDATE_BASE_URL must start with https:// and end with /, and "
                            "have neither user nor query: ${baseUrl}")
    endif()
    if(NOT resourcePrefix STREQUAL ""
            AND NOT resourcePrefix MATCHES "^/[a-z0-9]+/([A-Za-z0-9._-]+/)+$")
        message(FATAL_ERROR "VISTREL_UPDATE_RESOURCE_PREFIX must have the form /account/share/: "
                            "${resourcePrefix}")
    endif()
    string(LENGTH "${accountKey}" keyLength)
    math(EXPR keyRest "${keyLength} % 4")
    if(NOT accountKey STREQUAL ""
            AND NOT (accountKey MATCHES "^[A-Za-z0-9+/]+=?=?$" AND keyRest EQUAL 0))
        message(FATAL_ERROR "VISTREL_UPDATE_ACCOUNT_KEY is not base 64. (It is not shown here.)")
    endif()
endfunction()

if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
    vistrel_check_update_share("${VISTREL_UPDATE_BASE_URL}" "${VISTREL_UPDATE_RESOURCE_PREFIX}"
                               "${VISTREL_UPDATE_ACCOUNT_KEY}")
endif()

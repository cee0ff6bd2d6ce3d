# Called by cpack when it has packed: the members of the package have the mask of who calls it, and so
# equal contents would give other bytes. Their modes are in the archive's headers: after the name,
# which takes 16 letters, and three numbers, which take 24.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    execute_process(COMMAND "${CMAKE_COMMAND}" -E env LC_ALL=C sed --in-place
        -e "s/\\(debian-binary   [0-9 ]\\{24\\}\\)100[0-7]\\{3\\}/\\1100644/"
        -e "s/\\(control[.]tar[.]gz  [0-9 ]\\{24\\}\\)100[0-7]\\{3\\}/\\1100644/"
        -e "s/\\(data[.]tar[.]gz     [0-9 ]\\{24\\}\\)100[0-7]\\{3\\}/\\1100644/"
        "${package}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()

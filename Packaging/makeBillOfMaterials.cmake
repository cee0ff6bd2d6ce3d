# Writes the bill of materials of the installed programs, in SPDX 2.3 as JSON.
#   cmake -DPROGRAMS=FILES -DMODULES=PACKAGES -DVERSION=V -DDATE=YYYY-MM-DD -DBILL=FILE -P THIS
# PROGRAMS are the linked executables, whose libraries are looked up in the package system; MODULES
# the packages that are loaded by name, which no link line shows. Equal inputs give equal bytes.
cmake_minimum_required(VERSION 3.25)

function(run out)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE text OUTPUT_STRIP_TRAILING_WHITESPACE
                    COMMAND_ERROR_IS_FATAL ANY)
    set(${out} "${text}" PARENT_SCOPE)
endfunction()

# The libraries that the programs name themselves, as files.
set(libraries "")
foreach(program IN LISTS PROGRAMS)
    run(section readelf --dynamic --wide "${program}")
    string(REPLACE "[" "<" section "${section}") # a list does not come apart at brackets
    string(REGEX MATCHALL "\\(NEEDED\\)[^\n]*<[^]\n]+" needed "${section}")
    list(TRANSFORM needed REPLACE ".*<" "")
    run(loaded ldd "${program}")
    foreach(library IN LISTS needed)
        string(REPLACE "+" "\\+" pattern "${library}")
        if(loaded MATCHES "${pattern} => ([^ \n]+)")
            file(REAL_PATH "${CMAKE_MATCH_1}" file)
            list(APPEND libraries "${file}")
        endif()
    endforeach()
endforeach()
list(REMOVE_DUPLICATES libraries)

set(names ${MODULES})
foreach(library IN LISTS libraries)
    # The database may know the file below / or below /usr: both are one folder.
    execute_process(COMMAND dpkg-query --search "${library}" OUTPUT_VARIABLE owner ERROR_QUIET)
    if(NOT owner)
        string(REGEX REPLACE "^/usr" "" library "${library}")
        run(owner dpkg-query --search "${library}")
    endif()
    string(REGEX REPLACE ":.*" "" owner "${owner}")
    list(APPEND names "${owner}")
endforeach()
list(REMOVE_DUPLICATES names)
list(SORT names)

set(packages "")
set(relationships "")
foreach(name IN LISTS names)
    run(facts dpkg-query --show "--showformat=\${Version} \${Architecture}" "${name}")
    string(REPLACE " " ";" facts "${facts}")
    list(GET facts 0 version)
    list(GET facts 1 architecture)
    string(REGEX REPLACE "[^A-Za-z0-9.-]" "-" id "${name}")
    string(REPLACE "+" "%2B" urlName "${name}")
    string(REPLACE "+" "%2B" urlVersion "${version}")
    string(REPLACE ":" "%3A" urlVersion "${urlVersion}")
    string(REPLACE "~" "%7E" urlVersion "${urlVersion}")
    string(APPEND packages ",
    {
      \"SPDXID\": \"SPDXRef-${id}\",
      \"name\": \"${name}\",
      \"versionInfo\": \"${version}\",
      \"supplier\": \"Organization: Debian\",
      \"downloadLocation\": \"NOASSERTION\",
      \"filesAnalyzed\": false,
      \"licenseConcluded\": \"NOASSERTION\",
      \"licenseDeclared\": \"NOASSERTION\",
      \"copyrightText\": \"NOASSERTION\",
      \"externalRefs\": [
        {
          \"referenceCategory\": \"PACKAGE-MANAGER\",
          \"referenceType\": \"purl\",
          \"referenceLocator\": \"pkg:deb/debian/${urlName}@${urlVersion}?arch=${architecture}\"
        }
      ]
    }")
    string(APPEND relationships ",
    {
      \"spdxElementId\": \"SPDXRef-vistrel\",
      \"relationshipType\": \"DEPENDS_ON\",
      \"relatedSpdxElement\": \"SPDXRef-${id}\"
    }")
endforeach()

string(MD5 fingerprint "${VERSION}${packages}")
file(WRITE "${BILL}" "{
  \"spdxVersion\": \"SPDX-2.3\",
  \"dataLicense\": \"CC0-1.0\",
  \"SPDXID\": \"SPDXRef-DOCUMENT\",
  \"name\": \"vistrel-${VERSION}\",
  \"documentNamespace\": \"https://corvenity.example/vistrel/spdx/${VERSION}-${fingerprint}\",
  \"creationInfo\": {
    \"created\": \"${DATE}T00:00:00Z\",
    \"creators\": [\"Organization: The Vistrel authors\"]
  },
  \"packages\": [
    {
      \"SPDXID\": \"SPDXRef-vistrel\",
      \"name\": \"vistrel\",
      \"versionInfo\": \"${VERSION}\",
      \"supplier\": \"Organization: The Vistrel authors\",
      \"downloadLocation\": \"https://corvenity.example/vistrel\",
      \"filesAnalyzed\": false,
      \"licenseConcluded\": \"LicenseRef-Vistrel\",
      \"licenseDeclared\": \"LicenseRef-Vistrel\",
      \"copyrightText\": \"2026 the Vistrel authors\"
    }${packages}
  ],
  \"relationships\": [
    {
      \"spdxElementId\": \"SPDXRef-DOCUMENT\",
      \"relationshipType\": \"DESCRIBES\",
      \"relatedSpdxElement\": \"SPDXRef-vistrel\"
    }${relationships}
  ],
  \"hasExtractedLicensingInfos\": [
    {
      \"licenseId\": \"LicenseRef-Vistrel\",
      \"name\": \"Vistrel\",
      \"extractedText\": \"The file LICENSE that is installed beside this one.\"
    }
  ]
}
")

# The target `docs` makes a site from the public headers, README.md and docs/*.md, under html/ in
# the build folder. Any warning is an error: a public name without a comment, a link to nowhere.
find_package(Doxygen REQUIRED)

set(DOXYGEN_USE_MDFILE_AS_MAINPAGE README.md)
set(DOXYGEN_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
set(DOXYGEN_STRIP_FROM_PATH ${PROJECT_SOURCE_DIR})
set(publicRooms ${ZVG_INCLUDE_ROOMS} model/include)
set(DOXYGEN_STRIP_FROM_INC_PATH ${publicRooms})
list(TRANSFORM DOXYGEN_STRIP_FROM_INC_PATH PREPEND ${PROJECT_SOURCE_DIR}/)

# The first sentence of a comment is the summary; parameters are told in prose; a comment in front
# of @{ holds for each declaration up to @}.
set(DOXYGEN_JAVADOC_AUTOBRIEF YES)
set(DOXYGEN_DISTRIBUTE_GROUP_DOC YES)
set(DOXYGEN_WARN_NO_PARAMDOC NO)
set(DOXYGEN_EXTRACT_ALL NO)
set(DOXYGEN_WARN_IF_UNDOCUMENTED YES)
set(DOXYGEN_WARN_AS_ERROR FAIL_ON_WARNINGS)
set(DOXYGEN_QUIET YES)
set(DOXYGEN_SORT_MEMBER_DOCS NO)

# The macros that mark exports are no part of a declaration's text.
set(DOXYGEN_MACRO_EXPANSION YES)
set(DOXYGEN_EXPAND_ONLY_PREDEF YES)
set(DOXYGEN_PREDEFINED ZVFT_API= ZVLG_API= ZVSM_API= ZVFT_LOCAL=)

# Headings get the anchors that the pages' links name, as where the repository is shown.
set(DOXYGEN_FILTER_PATTERNS *.md=${PROJECT_SOURCE_DIR}/cmake/markdown-anchors)
set(DOXYGEN_IMAGE_PATH ${PROJECT_SOURCE_DIR}/docs/images)

set(DOXYGEN_GENERATE_TREEVIEW YES)
set(DOXYGEN_HAVE_DOT NO)

doxygen_add_docs(docs ${publicRooms} docs README.md CONTRIBUTING.md CHANGELOG.md SECURITY.md
                 COMMENT "Making the site")

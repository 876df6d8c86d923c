// Names for the linker: what NewerLibrary.cpp asks of the host, and web/src/module.ts answers.
mergeInto(LibraryManager.library, { number_of_text: () => {}, text_of_number: () => {} });

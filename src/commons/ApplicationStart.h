#pragma once

// What the program sets up before the first file is read.
namespace ApplicationStart {

// The application's additions to the ExifTool white list, and the readers of every source.
void installMetadataReaders();

// Edits go to the write engine, which merges them per file and writes them in the background.
void installWritePath();

} // namespace ApplicationStart

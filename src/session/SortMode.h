#pragma once

// Sort keys: each key has an ascending case at an even raw value and a descending one next.
enum class SortMode : int {
    nameAndSequenceAscending = 0,
    nameAndSequenceDescending,
    pathAndSequenceAscending,
    pathAndSequenceDescending,
    fileCreationDateAscending,
    fileCreationDateDescending,
    fileModificationDateAscending,
    fileModificationDateDescending,
    contentCreationDateAscending,
    contentCreationDateDescending,
    sizeAscending,
    sizeDescending,
    nameAscending,
    nameDescending,
    absolutePathAscending,
    absolutePathDescending,
    cityAscending,
    cityDescending,
    countryAscending,
    countryDescending,
    subLocationAscending,
    subLocationDescending,
    provinceAscending,
    provinceDescending,
};

constexpr int sortModeCount = 24;

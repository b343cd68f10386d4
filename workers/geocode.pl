#!/usr/bin/env perl
# Palomet's offline geocoder: a long-running worker on ExifTool's geolocation database, which it
# loads once. One request a line on standard input, answers on standard output; fields are
# separated by tabs and texts are UTF-8:
#
#   reverse <id> <latitude> <longitude> <count> <maximum km>
#   search <id> <text> <count> [<centre latitude> <centre longitude> <latitude span> <longitude span>]
#
# An answer is zero or more lines
#   place <id> <name> <subLocality> <locality> <administrativeArea> <country> <country code> <latitude> <longitude>
# then "done <id>"; a request it cannot read gets "error <id> <message>" instead. The worker
# writes "ready <number of places>" once the database is loaded, and ends when its input closes.
use strict;
use warnings;
use feature 'fc';

use FindBin;
use lib "$FindBin::RealBin/exiftool/lib";

use POSIX ();
use Unicode::Normalize ();
use Image::ExifTool::Geolocation;

my $earthRadiusKm = 6371;
my $kmPerDegree = $earthRadiusKm * 3.14159265358979 / 180;
my $maximumCount = 1000;

# Coordinates and populations of every place, and a grid of one-degree cells for reverse lookups.
my (@latitudes, @longitudes, @populations, %cells);
my $placeCount = 0;
while (my @entry = Image::ExifTool::Geolocation::GetEntry($placeCount)) {
    my ($latitude, $longitude) = @entry[8, 9];
    $latitudes[$placeCount] = $latitude;
    $longitudes[$placeCount] = $longitude;
    $populations[$placeCount] = $entry[7] || 0;
    push @{$cells{cellKey(cellLatitude($latitude), cellLongitude($longitude))}}, $placeCount;
    ++$placeCount;
}
$placeCount or die "geocode.pl: the geolocation database could not be loaded\n";

# Folded names in sorted order for prefix searches, built at the first search since reverse
# lookups, the common request, do not need them.
my (@sortedNames, @sortedPlaces);

$| = 1;
binmode STDIN;
binmode STDOUT;
print "ready\t$placeCount\n";

while (my $line = <STDIN>) {
    $line =~ s/\r?\n\z//;
    my ($verb, $id, @arguments) = split /\t/, $line, -1;
    next unless defined $verb and length $verb;
    $id = '' unless defined $id;
    my @places = eval {
        if ($verb eq 'reverse') {
            reverseLookup(@arguments);
        } elsif ($verb eq 'search') {
            search(@arguments);
        } else {
            die "unknown request\n";
        }
    };
    if (my $error = $@) {
        chomp $error;
        print "error\t", clean($id), "\t", clean($error), "\n";
        next;
    }
    print join("\t", 'place', clean($id), map { clean($_) } placeFields($_)), "\n" for @places;
    print "done\t", clean($id), "\n";
}
exit 0;

sub clean
{
    my ($text) = @_;
    $text = '' unless defined $text;
    $text =~ tr/\t\r\n/   /;
    return $text;
}

sub cellLatitude
{
    my $cell = POSIX::floor($_[0]);
    return $cell < -90 ? -90 : $cell > 89 ? 89 : $cell;
}

sub cellLongitude
{
    my $cell = POSIX::floor($_[0]);
    return ($cell + 180) % 360 - 180;
}

sub cellKey { return ($_[0] + 90) * 360 + ($_[1] + 180) }

sub number
{
    my ($text, $what, $minimum, $maximum) = @_;
    defined $text and $text =~ /^[-+]?(?:\d+\.?\d*|\.\d+)(?:[eE][-+]?\d+)?$/
        or die "$what is not a number\n";
    $text >= $minimum and $text <= $maximum or die "$what is out of range\n";
    return $text + 0;
}

sub count
{
    my ($text) = @_;
    defined $text and $text =~ /^\d+$/ and $text >= 1 and $text <= $maximumCount
        or die "bad count\n";
    return $text + 0;
}

sub radians { return $_[0] * 3.14159265358979 / 180 }

# Great-circle distance in kilometres.
sub distanceKm
{
    my ($latitude1, $longitude1, $latitude2, $longitude2) = @_;
    my $sinLatitude = sin(radians($latitude2 - $latitude1) / 2);
    my $sinLongitude = sin(radians($longitude2 - $longitude1) / 2);
    my $a = $sinLatitude * $sinLatitude
        + cos(radians($latitude1)) * cos(radians($latitude2)) * $sinLongitude * $sinLongitude;
    $a = 1 if $a > 1;
    return 2 * $earthRadiusKm * atan2(sqrt($a), sqrt(1 - $a));
}

sub reverseLookup
{
    my ($latitudeText, $longitudeText, $countText, $distanceText) = @_;
    my $latitude = number($latitudeText, 'latitude', -90, 90);
    my $longitude = number($longitudeText, 'longitude', -180, 180);
    my $count = count($countText);
    my $maximumKm = number($distanceText, 'distance', 0, 2 * $earthRadiusKm * 3.15);

    # The cells that the circle can touch: its latitude band, and in longitude as much as the
    # band's narrowest parallel needs, or the whole band near a pole.
    my $latitudeSpan = $maximumKm / $kmPerDegree;
    my ($firstRow, $lastRow) = (cellLatitude($latitude - $latitudeSpan), cellLatitude($latitude + $latitudeSpan));
    my $highest = abs($latitude) + $latitudeSpan;
    my $cosine = $highest >= 90 ? 0 : cos(radians($highest));
    my @columns;
    if ($cosine > 1e-6 and $latitudeSpan / $cosine < 179) {
        my $longitudeSpan = $latitudeSpan / $cosine;
        @columns = map { cellLongitude($_) }
            POSIX::floor($longitude - $longitudeSpan) .. POSIX::floor($longitude + $longitudeSpan);
    } else {
        @columns = -180 .. 179;
    }

    my @found;
    for my $row ($firstRow .. $lastRow) {
        for my $column (@columns) {
            my $places = $cells{cellKey($row, $column)} or next;
            for my $place (@$places) {
                my $distance = distanceKm($latitude, $longitude, $latitudes[$place], $longitudes[$place]);
                push @found, [$place, $distance] if $distance <= $maximumKm;
            }
        }
    }
    @found = sort { $a->[1] <=> $b->[1] or $populations[$b->[0]] <=> $populations[$a->[0]]
                    or $a->[0] <=> $b->[0] } @found;
    splice @found, $count if @found > $count;
    return map { $_->[0] } @found;
}

# Case and accents do not count when names are compared: "zurich" finds "Zürich".
sub folded
{
    my ($text) = @_;
    utf8::decode($text);
    $text = fc $text;
    if ($text =~ /[^\x00-\x7f]/) {
        $text = Unicode::Normalize::NFD($text);
        $text =~ s/\p{Mn}+//g;
    }
    utf8::encode($text);
    return $text;
}

sub buildNameIndex
{
    my @names;
    for my $place (0 .. $placeCount - 1) {
        my ($name) = Image::ExifTool::Geolocation::GetEntry($place);
        $names[$place] = folded($name);
    }
    @sortedPlaces = sort { $names[$a] cmp $names[$b] or $a <=> $b } 0 .. $placeCount - 1;
    @sortedNames = @names[@sortedPlaces];
}

# How far a place lies outside the region, 0 inside it.
sub distanceToRegionKm
{
    my ($place, $latitude, $longitude, $latitudeSpan, $longitudeSpan) = @_;
    my $placeLatitude = $latitudes[$place];
    my $offset = $longitudes[$place] - $longitude;
    $offset -= 360 while $offset >= 180;
    $offset += 360 while $offset < -180;
    my $nearestLatitude = $placeLatitude;
    $nearestLatitude = $latitude - $latitudeSpan / 2 if $nearestLatitude < $latitude - $latitudeSpan / 2;
    $nearestLatitude = $latitude + $latitudeSpan / 2 if $nearestLatitude > $latitude + $latitudeSpan / 2;
    my $nearestOffset = $offset;
    $nearestOffset = -$longitudeSpan / 2 if $nearestOffset < -$longitudeSpan / 2;
    $nearestOffset = $longitudeSpan / 2 if $nearestOffset > $longitudeSpan / 2;
    return 0 if $nearestLatitude == $placeLatitude and $nearestOffset == $offset;
    return distanceKm($placeLatitude, $offset, $nearestLatitude, $nearestOffset);
}

sub search
{
    my ($text, $countText, @region) = @_;
    my $count = count($countText);
    my $prefix = folded(defined $text ? $text : '');
    $prefix =~ s/^\s+//;
    $prefix =~ s/\s+$//;
    return () unless length $prefix;
    my @area;
    if (@region) {
        @region == 4 or die "bad region\n";
        @area = (number($region[0], 'latitude', -90, 90), number($region[1], 'longitude', -180, 180),
                 number($region[2], 'latitude span', 0, 180), number($region[3], 'longitude span', 0, 360));
    }
    buildNameIndex() unless @sortedNames;

    # The first name not sorting before the prefix, then every name that begins with it.
    my ($low, $high) = (0, scalar @sortedNames);
    while ($low < $high) {
        my $middle = int(($low + $high) / 2);
        if ($sortedNames[$middle] lt $prefix) { $low = $middle + 1 } else { $high = $middle }
    }
    my @found;
    for (my $i = $low; $i < @sortedNames and index($sortedNames[$i], $prefix) == 0; ++$i) {
        push @found, $sortedPlaces[$i];
    }

    if (@area) {
        my %distance = map { $_ => distanceToRegionKm($_, @area) } @found;
        @found = sort { $distance{$a} <=> $distance{$b} or $populations[$b] <=> $populations[$a]
                        or $a <=> $b } @found;
    } else {
        @found = sort { $populations[$b] <=> $populations[$a] or $a <=> $b } @found;
    }
    splice @found, $count if @found > $count;
    return @found;
}

# The database's city, region, subregion, country and feature code as the fields of a place.
# A section of a populated place (feature code PPLX) shows its surrounding place, the subregion
# without a " County", " Parish" or " Borough" ending, as the locality and itself as the
# sub-locality, as the computed city and sub-location of the metadata reader do.
sub placeFields
{
    my ($place) = @_;
    my ($city, $region, $subregion, $countryCode, $country, undef, $featureCode, undef,
        $latitude, $longitude) = Image::ExifTool::Geolocation::GetEntry($place);
    my $surrounding = defined $subregion ? $subregion : '';
    for my $suffix (' County', ' Parish', ' Borough') {
        next unless length $surrounding >= length $suffix
            and substr($surrounding, -length $suffix) eq $suffix;
        substr($surrounding, -length $suffix) = '';
        last;
    }
    my ($locality, $subLocality) = ($city, '');
    if (defined $featureCode and $featureCode eq 'PPLX' and length $surrounding) {
        ($locality, $subLocality) = ($surrounding, $city);
    }
    return ($city, $subLocality, $locality, $region, $country, $countryCode, $latitude, $longitude);
}

#!/usr/bin/env perl
# Palomet's read worker. One file path per line on standard input; for each, the requested
# tags as "{extracted-key}:Key" lines each followed by its value lines, then a closing key line
# that carries the terminator, with no line feed behind it. Exits at the end of its input.
#
# Environment:
#   EXIFTOOL_INCLUDE_TAGS        tags to read, comma-separated ("Group:Tag" names a group)
#   EXIFTOOL_INCLUDE_RAW_TAGS    tags to read as numbers, each ending in "#"
#   EXIFTOOL_CHARSET             ExifTool's Charset option ("utf8")
#   EXIFTOOL_CHARSET_FILENAME    ExifTool's CharsetFileName option ("utf8")
#   EXIFTOOL_ENABLE_GEOLOCATION  "1" switches ExifTool's geolocation tags on
use strict;
use warnings;

use FindBin qw($RealBin);

# Only the ExifTool that travels with Palomet may answer: its version is the one the key
# rules below were written for, and its Geolocation.dat is the offline geocoding database.
my $exifToolLib;
BEGIN { $exifToolLib = "$RealBin/exiftool/lib"; }
use lib $exifToolLib;
use Image::ExifTool;
die "extract.pl: Image::ExifTool was not loaded from $exifToolLib\n"
    unless $INC{'Image/ExifTool.pm'} eq "$exifToolLib/Image/ExifTool.pm";

# ExifTool opens every file it reads through its Open method. This one opens for reading only
# what is a regular file at the moment of opening: a FIFO, socket or device named like a photo
# would block the worker for ever, and so every read behind it. Opening without blocking and
# testing the open handle leaves no gap in which such a file could take the checked one's place.
package PalometExifTool;
use Fcntl qw(O_RDONLY O_NONBLOCK F_GETFL F_SETFL);
our @ISA = ('Image::ExifTool');

sub Open
{
    my ($self, $fh, $file, $mode) = @_;
    return $self->SUPER::Open($fh, $file, $mode) if defined $mode && $mode ne '<';
    sysopen($fh, $file, O_RDONLY | O_NONBLOCK) or return 0;
    unless (-f $fh) {
        close $fh;
        return 0;
    }
    my $flags = fcntl($fh, F_GETFL, 0);
    fcntl($fh, F_SETFL, $flags & ~O_NONBLOCK) if $flags;
    binmode $fh;
    return 1;
}

package main;

my $KEY_PREFIX = '{extracted-key}:';
my $TERMINATOR = '-<-do-not_use_thisInMetaData-Finished-->';

# Files whose position is the signed QuickTime location and that carry no reference tags.
my %QUICKTIME_FAMILY = map { $_ => 1 }
    qw(MOV MP4 M4V M4A M4B M4P 3GP 3G2 3GPP MQV QT QTIF F4V F4A F4B F4P);

# Where a QuickTime file keeps its location, by preference.
my @QUICKTIME_LOCATION_GROUPS = qw(Keys UserData ItemList);

# Keys whose value the rules in legacyValues/extraValues decide, whatever ExifTool would pick.
my %LEGACY_GPS_TAGS = map { $_ => 1 }
    qw(GPSLatitude GPSLongitude GPSLatitudeRef GPSLongitudeRef GPSAltitude GPSAltitudeRef);
my %IPTC_FIELDS = (
    'City'           => 'City',
    'Province-State' => 'Province-State',
    'Sub-location'   => 'Sub-location',
    'Country'        => 'Country-PrimaryLocationName',
);
# The answer key of each field's XMP copy, which stands in where the IPTC copy is missing.
my %XMP_STAND_IN = (
    'City'           => 'XMPCity',
    'Province-State' => 'XMPState',
    'Sub-location'   => 'XMPLocation',
    'Country'        => 'XMPCountry',
);

# The pairs compared for the divergence flags: flag, IPTC tag, XMP group and tag.
my @FIELD_PAIRS = (
    [ 'CityDivergent',        'City',                        'XMP-photoshop', 'City' ],
    [ 'StateDivergent',       'Province-State',              'XMP-photoshop', 'State' ],
    [ 'CountryDivergent',     'Country-PrimaryLocationName', 'XMP-photoshop', 'Country' ],
    [ 'SublocationDivergent', 'Sub-location',                'XMP-iptcCore',  'Location' ],
);
my $GPS_TOLERANCE = 0.000001;

sub splitList
{
    my ($text) = @_;
    return grep { length } map { s/^\s+|\s+$//gr } split /,/, ($text // '');
}

# What was asked for, in order: the key text to answer with, its group, its tag, and whether it
# is wanted as a number.
my @wanted;
for my $entry (splitList($ENV{EXIFTOOL_INCLUDE_TAGS}), splitList($ENV{EXIFTOOL_INCLUDE_RAW_TAGS})) {
    my $raw = $entry =~ /#$/ ? 1 : 0;
    (my $name = $entry) =~ s/#$//;
    my ($group, $tag) = $name =~ /^([^:]*):(.*)$/ ? ($1, $2) : (undef, $name);
    push @wanted, { key => $entry, group => $group, tag => $tag, raw => $raw };
}

my @requestTags = (
    (map { defined $$_{group} ? "$$_{group}:$$_{tag}" : $$_{tag} } @wanted),
    qw(GPSLatitude GPSLongitude GPSLatitudeRef GPSLongitudeRef GPSAltitude GPSAltitudeRef),
    qw(GPSCoordinates LocationInformation),
    qw(City Province-State Sub-location Country-PrimaryLocationName),
    qw(State Country Location XMP),
);

my $geolocation = ($ENV{EXIFTOOL_ENABLE_GEOLOCATION} // '') eq '1';

# Tag names as ExifTool matches them, without group or case.
my %requestedNames = map { lc(s/^.*://r) => 1 } @requestTags;

# One ExifTool object for the worker's whole life; its options stay as set here. The tags are
# requested once, as an option, rather than with every file: ExifTool then neither parses the
# list nor matches it against every found tag per file. Duplicates keeps every copy of a tag, so
# that the legacy and XMP copies of a field can be told apart.
my $exifTool = PalometExifTool->new;
$exifTool->Options(
    RequestTags     => \@requestTags,
    Duplicates      => 1,
    Charset         => $ENV{EXIFTOOL_CHARSET} || 'UTF8',
    CharsetFileName => $ENV{EXIFTOOL_CHARSET_FILENAME} || 'UTF8',
    Geolocation     => $geolocation ? 1 : undef,
);

# ExifTool names further copies of a tag "Name (1)", "Name (2)"...; the preferred one is bare.
sub copyNumber
{
    my ($key) = @_;
    return $key =~ /\((\d+)\)$/ ? $1 : 0;
}

# The found copies of the requested tag names in one file, indexed by tag name: each entry
# holds the tag key and its family 0 and family 1 groups ("EXIF" and "GPS", "XMP" and
# "XMP-photoshop", ...). One pass over the found tags; other names are of no interest.
sub indexFoundTags
{
    my %byName;
    # The geolocation feature asks ExifTool for a few tags in the middle of the extraction,
    # which leaves its short list behind as the found tags; forget it to list them all.
    delete $$exifTool{FOUND_TAGS};
    for my $key ($exifTool->GetFoundTags) {
        my $name = Image::ExifTool::GetTagName($key);
        next unless $requestedNames{ lc $name };
        push @{ $byName{$name} }, {
            key    => $key,
            group0 => $exifTool->GetGroup($key, 0),
            group1 => $exifTool->GetGroup($key, 1),
        };
    }
    # The preferred copy first, then the others in the order ExifTool found them.
    for my $list (values %byName) {
        @$list = sort { copyNumber($$a{key}) <=> copyNumber($$b{key}) } @$list if @$list > 1;
    }
    return \%byName;
}

# A copy's value, converted once per file and kind; undef when ExifTool has none.
sub convertedValue
{
    my ($entry, $raw) = @_;
    my $kind = $raw ? 'ValueConv' : 'PrintConv';
    $$entry{$kind} = [ scalar $exifTool->GetValue($$entry{key}, $kind) ] unless $$entry{$kind};
    return $$entry{$kind}[0];
}

# The first found copy of a tag whose groups pass the test, or undef. A copy without a printed
# value counts as not found, as ExifTool leaves it out of its own answers.
sub findTag
{
    my ($found, $name, $groupTest) = @_;
    for my $entry (@{ $$found{$name} || [] }) {
        next if $groupTest && !$groupTest->($entry);
        return $entry if defined convertedValue($entry, 0);
    }
    return undef;
}

# A value as text: lists joined, binary and structured values left out.
sub valueText
{
    my ($entry, $raw) = @_;
    return undef unless $entry;
    my $value = convertedValue($entry, $raw);
    return undef unless defined $value;
    $value = join(', ', grep { defined && !ref } @$value) if ref $value eq 'ARRAY';
    return undef if ref $value;
    return $value;
}

sub trimmed
{
    my ($text) = @_;
    return undef unless defined $text;
    $text =~ s/^\s+|\s+$//g;
    return length $text ? $text : undef;
}

sub isQuickTimeFamily
{
    my ($path) = @_;
    return $path =~ /\.([^.\/]+)$/ && $QUICKTIME_FAMILY{ uc $1 };
}

sub inGroup0 { my ($group) = @_; return sub { $_[0]{group0} eq $group }; }
sub inGroup1 { my ($group) = @_; return sub { $_[0]{group1} eq $group }; }

# The QuickTime location as signed latitude, longitude and altitude, or nothing.
sub quickTimeCoordinates
{
    my ($found) = @_;
    for my $group (@QUICKTIME_LOCATION_GROUPS) {
        my $text = valueText(findTag($found, 'GPSCoordinates', inGroup1($group)), 1);
        next unless defined $text;
        my @parts = split ' ', $text;
        return @parts if @parts >= 2;
    }
    for my $entry (@{ $$found{GPSCoordinates} || [] }) {
        my $text = valueText($entry, 1);
        my @parts = defined $text ? split(' ', $text) : ();
        return @parts if @parts >= 2 && $$entry{group0} eq 'QuickTime';
    }
    # Last, a 3GPP location box (what ffmpeg and 3GP recorders write): ExifTool's composite
    # position decodes it.
    if (findTag($found, 'LocationInformation', inGroup0('QuickTime'))) {
        my $composite = inGroup0('Composite');
        # The box holds 16.16 fixed-point numbers, which ExifTool prints with trailing zeros.
        my @parts = map { my $text = valueText(findTag($found, $_, $composite), 1);
                          defined $text && $text =~ /^\s*[-+]?[\d.]+\s*$/ ? $text + 0 : undef }
            qw(GPSLatitude GPSLongitude GPSAltitude);
        pop @parts unless defined $parts[2];
        return @parts if defined $parts[0] && defined $parts[1];
    }
    return ();
}

# The legacy position and its companions: the EXIF GPS tags of a still image, the QuickTime
# location of a movie or sound file. Keyed by the answer's key text.
sub legacyValues
{
    my ($found, $quickTime) = @_;
    my %values;
    if ($quickTime) {
        my ($latitude, $longitude, $altitude) = quickTimeCoordinates($found);
        return \%values unless defined $latitude;
        $values{'GPSLatitude#'}  = $latitude;
        $values{'GPSLongitude#'} = $longitude;
        $values{'GPSAltitude#'}  = $altitude if defined $altitude;
        my $composite = inGroup0('Composite');
        for my $tag (qw(GPSLatitude GPSLongitude GPSAltitude)) {
            my $text = valueText(findTag($found, $tag, $composite), 0);
            $values{$tag} = $text if defined $text;
        }
        return \%values;
    }
    my $exif = inGroup0('EXIF');
    for my $tag (keys %LEGACY_GPS_TAGS) {
        my $entry = findTag($found, $tag, $exif);
        next unless $entry;
        my $text = valueText($entry, 0);
        $values{$tag} = $text if defined $text;
        my $number = valueText($entry, 1);
        $values{"$tag#"} = $number if defined $number;
    }
    return \%values;
}

# Whether the file holds XMP: the packet itself, a requested tag read from it, or, for formats
# that carry the packet inline rather than as a block of their own (SVG's metadata element),
# any tag of the XMP group. The full scan runs only when the quicker tests fail.
sub xmpPresent
{
    my ($found) = @_;
    return 1 if findTag($found, 'XMP');
    for my $name (keys %$found) {
        my $preferred = findTag($found, $name);
        return 1 if $preferred && $$preferred{group0} eq 'XMP';
    }
    for my $key ($exifTool->GetFoundTags) {
        return 1 if $exifTool->GetGroup($key, 0) eq 'XMP';
    }
    return 0;
}

sub isNumber
{
    my ($text) = @_;
    return defined $text && $text =~ /^\s*[-+]?(\d+\.?\d*|\.\d+)([eE][-+]?\d+)?\s*$/;
}

# The legacy position as signed numbers; a missing reference counts as north or east. The
# references' letters stand under "GPSLatitudeRef#" and "GPSLongitudeRef#".
sub signedLegacyPosition
{
    my ($legacy, $quickTime) = @_;
    my ($latitude, $longitude) = ($$legacy{'GPSLatitude#'}, $$legacy{'GPSLongitude#'});
    return () unless isNumber($latitude) && isNumber($longitude);
    return ($latitude + 0, $longitude + 0) if $quickTime;
    $latitude  = -$latitude  if ($$legacy{'GPSLatitudeRef#'}  // '') eq 'S';
    $longitude = -$longitude if ($$legacy{'GPSLongitudeRef#'} // '') eq 'W';
    return ($latitude + 0, $longitude + 0);
}

# A signed number's sign and its digits, as text, so that the digits stay as ExifTool wrote them.
sub splitSign
{
    my ($number) = @_;
    my ($sign, $digits) = $number =~ /^\s*([-+]?)\s*(.*?)\s*$/;
    return ($sign eq '-', $digits);
}

# The legacy values with the XMP-exif copies standing in, in the legacy form, for what the legacy
# metadata lacks: a format without EXIF or QuickTime location (GIF, PDF, PNG or WebP written
# through XMP) then shows, sorts, maps and edits its position like any other file. The position
# stands in as a whole, with references to match, only when the legacy metadata holds neither
# coordinate; the altitude is a field of its own.
sub withXmpStandIns
{
    my ($found, $legacy, $quickTime) = @_;
    my %values = %$legacy;
    my $xmpExif = inGroup1('XMP-exif');
    my %hemispheres = (GPSLatitude => [ 'North', 'South' ], GPSLongitude => [ 'East', 'West' ]);
    unless (defined $values{'GPSLatitude#'} || defined $values{'GPSLongitude#'}) {
        for my $tag (qw(GPSLatitude GPSLongitude)) {
            my $entry = findTag($found, $tag, $xmpExif);
            my $number = valueText($entry, 1);
            next unless isNumber($number);
            my $text = valueText($entry, 0);
            my ($negative, $digits) = splitSign($number);
            if ($quickTime) {
                $values{"$tag#"} = $negative ? "-$digits" : $digits;
                $values{$tag} = $text if defined $text;
                next;
            }
            $values{"$tag#"} = $digits;
            $values{"${tag}Ref"} = $hemispheres{$tag}[$negative ? 1 : 0];
            # The XMP text ends in its hemisphere's letter, which EXIF keeps in the reference.
            $values{$tag} = $text =~ s/\s*[NSEW]$//r if defined $text;
        }
    }
    unless (defined $values{'GPSAltitude#'}) {
        my $entry = findTag($found, 'GPSAltitude', $xmpExif);
        my $number = valueText($entry, 1);
        if (isNumber($number)) {
            my $reference = findTag($found, 'GPSAltitudeRef', $xmpExif);
            my $below = (valueText($reference, 1) // '') eq '1';
            my (undef, $digits) = splitSign($number);
            my $text = valueText($entry, 0);
            $values{GPSAltitude} = $text if defined $text;
            if ($quickTime) {
                $values{'GPSAltitude#'} = $below ? "-$digits" : $digits;
            } else {
                $values{'GPSAltitude#'} = $digits;
                my $referenceText = valueText($reference, 0);
                $values{GPSAltitudeRef} = $referenceText if defined $referenceText;
            }
        }
    }
    return \%values;
}

# The keys that no single ExifTool tag gives: the XMP view of the location, XMPPresent and the
# divergence flags. A flag is written only when it is set.
sub extraValues
{
    my ($found, $legacy, $quickTime) = @_;
    my %values;
    my %xmpField;
    for my $pair (@FIELD_PAIRS) {
        my ($flag, $iptcTag, $xmpGroup, $xmpTag) = @$pair;
        my $xmp = valueText(findTag($found, $xmpTag, inGroup1($xmpGroup)), 0);
        $xmpField{$xmpTag} = $xmp;
        my ($iptcText, $xmpText) =
            (trimmed(valueText(findTag($found, $iptcTag, inGroup0('IPTC')), 0)), trimmed($xmp));
        $values{$flag} = '1' if defined $iptcText && defined $xmpText && $iptcText ne $xmpText;
    }
    $values{XMPCity}     = $xmpField{City}     if defined $xmpField{City};
    $values{XMPState}    = $xmpField{State}    if defined $xmpField{State};
    $values{XMPCountry}  = $xmpField{Country}  if defined $xmpField{Country};
    $values{XMPLocation} = $xmpField{Location} if defined $xmpField{Location};

    my $xmpExif = inGroup1('XMP-exif');
    my $xmpLatitude  = valueText(findTag($found, 'GPSLatitude',  $xmpExif), 1);
    my $xmpLongitude = valueText(findTag($found, 'GPSLongitude', $xmpExif), 1);
    $values{'XMPGPSLatitude#'}  = $xmpLatitude  if defined $xmpLatitude;
    $values{'XMPGPSLongitude#'} = $xmpLongitude if defined $xmpLongitude;

    my @legacyPosition = signedLegacyPosition($legacy, $quickTime);
    if (@legacyPosition && isNumber($xmpLatitude) && isNumber($xmpLongitude)) {
        $values{GPSDivergent} = '1'
            if abs($legacyPosition[0] - $xmpLatitude) > $GPS_TOLERANCE
            || abs($legacyPosition[1] - $xmpLongitude) > $GPS_TOLERANCE;
    }

    $values{XMPPresent} = '1' if xmpPresent($found);
    return \%values;
}

my @EXTRA_KEYS = (
    qw(XMPCity XMPState XMPCountry XMPLocation), 'XMPGPSLatitude#', 'XMPGPSLongitude#',
    qw(XMPPresent GPSDivergent CityDivergent StateDivergent CountryDivergent SublocationDivergent),
);

sub answerLine
{
    my ($key, $value) = @_;
    return '' unless defined $value;
    return "$KEY_PREFIX$key\n$value\n";
}

sub describe
{
    my ($path) = @_;
    # Anything but a regular file (a FIFO, socket or device named like a photo, a folder) is
    # never opened: it has no tags. The Open above covers a file swapped in after this test.
    return '' unless -f $path;
    $exifTool->ExtractInfo($path);
    my $found = indexFoundTags();
    my $quickTime = isQuickTimeFamily($path);
    my $legacy = legacyValues($found, $quickTime);
    # Divergence is judged on the copies the file holds; the answer shows the stand-ins.
    my $extra = extraValues($found, $legacy, $quickTime);
    my $position = withXmpStandIns($found, $legacy, $quickTime);

    my $answer = '';
    for my $want (@wanted) {
        my ($key, $group, $tag, $raw) = @$want{qw(key group tag raw)};
        my $value;
        if (!defined $group && $LEGACY_GPS_TAGS{$tag}) {
            $value = $$position{ $raw ? "$tag#" : $tag };
        } elsif (!defined $group && $IPTC_FIELDS{$tag}) {
            $value = valueText(findTag($found, $IPTC_FIELDS{$tag}, inGroup0('IPTC')), $raw);
            # A field without an IPTC copy answers with its XMP copy.
            $value = $$extra{ $XMP_STAND_IN{$tag} } unless defined trimmed($value);
        } elsif (defined $group) {
            my $lowerGroup = lc $group;
            $value = valueText(findTag($found, $tag, sub {
                lc($_[0]{group0}) eq $lowerGroup || lc($_[0]{group1}) eq $lowerGroup
            }), $raw);
        } else {
            $value = valueText(findTag($found, $tag), $raw);
        }
        $answer .= answerLine($key, $value);
    }
    $answer .= answerLine($_, $$extra{$_}) for @EXTRA_KEYS;
    return $answer;
}

binmode STDIN;
binmode STDOUT;
while (defined(my $path = <STDIN>)) {
    $path =~ s/\n$//;
    # A file that makes ExifTool fail still gets its closing line, so the reader never waits
    # for ever.
    my $answer = eval { describe($path) };
    unless (defined $answer) {
        warn "extract.pl: $path: $@" if $@;
        $answer = '';
    }
    print STDOUT $answer, $KEY_PREFIX, $TERMINATOR;
    STDOUT->flush;
}

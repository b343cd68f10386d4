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
    qw(GPSCoordinates City Province-State Sub-location Country-PrimaryLocationName),
    qw(State Country Location XMP),
);

my $geolocation = ($ENV{EXIFTOOL_ENABLE_GEOLOCATION} // '') eq '1';

# Tag names as ExifTool matches them, without group or case.
my %requestedNames = map { lc(s/^.*://r) => 1 } @requestTags;

# One ExifTool object for the worker's whole life; its options stay as set here. The tags are
# requested once, as an option, rather than with every file: ExifTool then neither parses the
# list nor matches it against every found tag per file. Duplicates keeps every copy of a tag, so
# that the legacy and XMP copies of a field can be told apart.
my $exifTool = Image::ExifTool->new;
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

    my $xmpPresent = findTag($found, 'XMP') || grep {
        my $preferred = findTag($found, $_);
        $preferred && $$preferred{group0} eq 'XMP'
    } keys %$found;
    $values{XMPPresent} = '1' if $xmpPresent;
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
    $exifTool->ExtractInfo($path);
    my $found = indexFoundTags();
    my $quickTime = isQuickTimeFamily($path);
    my $legacy = legacyValues($found, $quickTime);
    my $extra = extraValues($found, $legacy, $quickTime);

    my $answer = '';
    for my $want (@wanted) {
        my ($key, $group, $tag, $raw) = @$want{qw(key group tag raw)};
        my $value;
        if (!defined $group && $LEGACY_GPS_TAGS{$tag}) {
            $value = $$legacy{ $raw ? "$tag#" : $tag };
        } elsif (!defined $group && $IPTC_FIELDS{$tag}) {
            $value = valueText(findTag($found, $IPTC_FIELDS{$tag}, inGroup0('IPTC')), $raw);
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

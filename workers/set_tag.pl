#!/usr/bin/env perl
#
# Palomet's write worker: sets tags of one file and exits.
#
#   set_tag.pl PATH <none> TAG BASE64-VALUE [TAG BASE64-VALUE ...]
#
# Values arrive in base64 so that line feeds and any character survive the argument list; once
# decoded they are UTF-8 text. Exit status 0 when the file was written, 1 when ExifTool refused
# or failed (its message goes to standard error, one short line), 2 for a malformed call. The
# changed file replaces the original through ExifTool's temporary file and a rename; no backup
# copy is kept beside it.
#
use strict;
use warnings;

use Cwd ();
use FindBin;
use MIME::Base64 qw(decode_base64);

# Only the ExifTool that ships with the application: its version is the one the writes were
# checked against, whatever else the system has installed.
my $libDir;
BEGIN {
    $libDir = "$FindBin::RealBin/exiftool/lib";
    unshift @INC, $libDir;
}
use Image::ExifTool;

if ($INC{'Image/ExifTool.pm'} ne "$libDir/Image/ExifTool.pm") {
    print STDERR "Error: wrong ExifTool library $INC{'Image/ExifTool.pm'}\n";
    exit 2;
}

# File types whose GPS position is one QuickTime coordinate triple instead of EXIF GPS tags.
my %quickTimeFamily = map { $_ => 1 } qw(MOV MP4 M4V M4A M4B M4P 3GP 3G2 3GPP MQV QT QTIF
                                          F4V F4A F4B F4P);

sub fail
{
    my ($status, $message) = @_;
    $message =~ s/\s+$//;
    print STDERR "$message\n";
    exit $status;
}

# File types that hold no IPTC. For them ExifTool may drop a plain IPTC location name without a
# word (it prefers IPTC), so those names go to their MWG equivalents, which write XMP.
my %withoutIPTC = map { $_ => 1 } qw(MOV MP4 HEIC HEIF AVIF CR3 CRX RIFF WEBP GIF JXL);
my %mwgForIPTCName = (
    'city' => 'MWG:City',
    'province-state' => 'MWG:State',
    'sub-location' => 'MWG:Location',
    'country' => 'MWG:Country',
    'country-primarylocationname' => 'MWG:Country',
);

my ($path, $none, @encoded) = @ARGV;
fail(2, 'Error: usage: set_tag.pl PATH <none> TAG BASE64-VALUE ...') unless defined $none;
fail(2, 'Error: tags and values must come in pairs') if @encoded % 2;
fail(1, 'Error: File not found') unless -e $path;
# ExifTool renames its copy over the path it is given, which would turn a symbolic link into a
# file of its own; write the file the link points to instead.
$path = Cwd::abs_path($path) if -l $path;
# ExifTool would replace a read-only file through its rename; the user made it read-only, so
# leave it alone. A file without any write bit counts as read-only even for root.
fail(1, 'Error: File is read-only') unless -w $path and (stat _)[2] & 0222;

my $fileType = Image::ExifTool::GetFileType($path) || '';
my @pairs;
for (my $i = 0; $i < @encoded; $i += 2) {
    my $tag = $encoded[$i];
    $tag = $mwgForIPTCName{lc $tag} if $withoutIPTC{$fileType} and $mwgForIPTCName{lc $tag};
    push @pairs, [ $tag, decode_base64($encoded[$i + 1]) ];
}

# The MWG tags keep the IPTC and XMP copies of a field in step; once loaded they also take over
# plain names like "City", which must keep ExifTool's ordinary meaning, so load them on demand.
if (grep { $$_[0] =~ /^MWG:/i } @pairs) {
    require Image::ExifTool::MWG;
    Image::ExifTool::MWG::Load();
}
my $et = Image::ExifTool->new;
$et->Options(Charset => 'UTF8');

my ($extension) = $path =~ /\.([^.\/]+)$/;
my $isQuickTime = defined $extension && $quickTimeFamily{uc $extension};

# What the file holds now, read at most once and only when a decision needs it.
my $current;
sub currentInfo
{
    return $current if $current;
    my $reader = Image::ExifTool->new;
    $reader->Options(Charset => 'UTF8', List => 1, Duplicates => 1, FastScan => 0);
    $reader->ExtractInfo($path);
    $current = $reader;
    return $current;
}

# A coordinate triple for QuickTime keeps whatever altitude the file had.
sub existingQuickTimeCoordinates
{
    my $info = currentInfo();
    foreach my $group (qw(Keys UserData ItemList)) {
        foreach my $tag ($info->GetFoundTags('File')) {
            next unless Image::ExifTool::GetTagName($tag) eq 'GPSCoordinates';
            next unless $info->GetGroup($tag, 1) eq $group;
            my $value = $info->GetValue($tag, 'ValueConv');
            my @parts = split ' ', (defined $value ? $value : '');
            return @parts if @parts >= 2;
        }
    }
    return ();
}

sub setValue
{
    my ($tag, $value, @options) = @_;
    my ($count, $error) = $et->SetNewValue($tag, $value, @options);
    fail(1, "Error: $error") if $error;
    fail(1, "Error: Can't write $tag") unless $count;
}

my ($quickTimeLatitude, $quickTimeLongitude);
my $needsUTF8 = 0;

foreach my $pair (@pairs) {
    my ($tag, $value) = @$pair;
    my $text = $value;
    utf8::decode($text);
    $needsUTF8 = 1 if $text =~ /[^\x00-\xff]/;

    if ($isQuickTime and $tag =~ /^(?:[\w-]+:)?GPSLatitude#$/) {
        $quickTimeLatitude = $value;
    } elsif ($isQuickTime and $tag =~ /^(?:[\w-]+:)?GPSLongitude#$/) {
        $quickTimeLongitude = $value;
    } elsif ($tag =~ /^GPS(Latitude|Longitude)#$/) {
        # The EXIF coordinate is unsigned; its hemisphere comes with its own reference pair.
        setValue("GPS:$tag", abs($value));
    } else {
        setValue($tag, $value);
    }
}

if (defined $quickTimeLatitude or defined $quickTimeLongitude) {
    my @existing = existingQuickTimeCoordinates();
    my $latitude = defined $quickTimeLatitude ? $quickTimeLatitude : $existing[0];
    my $longitude = defined $quickTimeLongitude ? $quickTimeLongitude : $existing[1];
    fail(1, 'Error: GPS coordinates need both latitude and longitude')
        unless defined $latitude and defined $longitude;
    my $coordinates = "$latitude $longitude";
    $coordinates .= " $existing[2]" if @existing >= 3;
    setValue("$_:GPSCoordinates#", $coordinates) foreach qw(Keys UserData ItemList);
}

# IPTC stores Latin-1 unless told otherwise, which would turn other characters into question
# marks. Declare UTF-8 where IPTC is or will be written, and re-store the record's existing
# non-ASCII text so that it still reads the same under the new declaration.
if ($needsUTF8) {
    my $info = currentInfo();
    my @iptcTags = grep { $info->GetGroup($_, 0) eq 'IPTC' } $info->GetFoundTags('File');
    my ($charset) = map { $info->GetValue($_, 'ValueConv') }
        grep { Image::ExifTool::GetTagName($_) eq 'CodedCharacterSet' } @iptcTags;
    my $declaredUTF8 = defined $charset && $charset =~ /^\x1b%G$/;
    # An MWG tag edits an existing IPTC record only, so only the other tags can create one.
    my $createsIPTC = grep {
        my ($name) = $$_[0] =~ /^(?!MWG:)(?:[\w-]+:)?([\w-]+)#?$/i;
        defined $name and defined $et->GetNewValue("IPTC:$name")
    } @pairs;
    if (!$declaredUTF8 and (@iptcTags or $createsIPTC)) {
        setValue('IPTC:CodedCharacterSet', 'UTF8', Protected => 1);
        my %seen;
        foreach my $tag (@iptcTags) {
            my $name = Image::ExifTool::GetTagName($tag);
            # Whatever this write sets, directly or through MWG, keeps its new value.
            next if $seen{$name}++ or defined $et->GetNewValue("IPTC:$name");
            my @values = map { $info->GetValue($_, 'ValueConv') }
                grep { Image::ExifTool::GetTagName($_) eq $name } @iptcTags;
            @values = map { ref $_ eq 'ARRAY' ? @$_ : $_ } @values;
            next unless grep { defined $_ and /[\x80-\xff]/ } @values;
            setValue("IPTC:$name", @values > 1 ? \@values : $values[0]);
        }
    }
}

$! = 0;
my $result = $et->WriteInfo($path);
my $cause = "$!";
my $error = $et->GetValue('Error');
if ($result == 0 or $error) {
    $error = 'Error writing file' unless $error;
    # ExifTool names the file step that failed but not why; the system's reason tells a full
    # disk or a refused folder apart.
    $error =~ s/:\s*\Q$path\E\S*//;
    $error .= " ($cause)" if $cause and $error =~ /^Error (?:creating|writing|renaming|opening)/;
    fail(1, "Error: $error");
}
exit 0;

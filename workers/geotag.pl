#!/usr/bin/env perl
#
# Palomet's geotagging worker: places capture times on GPS tracks with ExifTool's own
# geotagging (its Geotag, Geotime and Geosync tags and its gap options), so that Palomet shows
# exactly where ExifTool puts a file. Nothing is written here: the positions go to the files
# through the write worker, like any other edit.
#
# Long-running; one request per line on standard input, fields separated by tabs, paths in
# base64. Each answer ends with a line "done".
#
#   load PATH...            Loads the track files anew. Answer: "point TIME LAT LON FIRST" for
#                           every fix in time order (TIME in seconds since 1970 UTC, FIRST 1 on
#                           the first fix of a file), or "error MESSAGE".
#   options MAXGAP MAXEXT SYNC
#                           The largest gap to interpolate across and the largest distance past
#                           a track's ends, in seconds, and the camera clock's correction in
#                           seconds (added to capture times). Answer: nothing but "done".
#   place COUNT             Followed by COUNT lines "ID TIME", TIME a Geotime value in UTC
#                           ("2024:05:01 10:00:00Z"). All are read before the first answer,
#                           so the caller can write them at once. Answer per line, in order:
#                           "fix ID LAT LON [ALT]" or "miss ID KIND SECONDS MESSAGE", KIND being
#                           before, after, gap or other, SECONDS the gap's length for a gap.
#
use strict;
use warnings;

use FindBin;
use MIME::Base64 qw(decode_base64);

my $libDir;
BEGIN {
    $libDir = "$FindBin::RealBin/exiftool/lib";
    unshift @INC, $libDir;
}
use Image::ExifTool;
require Image::ExifTool::Geotag;
use Time::Local ();

if ($INC{'Image/ExifTool.pm'} ne "$libDir/Image/ExifTool.pm") {
    print STDERR "Error: wrong ExifTool library $INC{'Image/ExifTool.pm'}\n";
    exit 2;
}

binmode STDIN;
binmode STDOUT;
$| = 0;

my $tagger;
my ($maxGap, $maxExtension, $sync) = (1800, 0, 0);

sub newTagger
{
    my $et = Image::ExifTool->new;
    $et->Options(GeoMaxIntSecs => $maxGap, GeoMaxExtSecs => $maxExtension);
    $et->SetNewValue('Geosync', sprintf('%+.3f', $sync));
    return $et;
}

sub clean
{
    my ($message) = @_;
    $message =~ s/ in File:Geo\w+ \(ValueConvInv\)//;
    $message =~ s/[\t\r\n]+/ /g;
    $message =~ s/\s+$//;
    return $message;
}

sub load
{
    my @paths = map { decode_base64($_) } @_;
    $tagger = newTagger();
    foreach my $path (@paths) {
        my ($count, $error) = $tagger->SetNewValue('Geotag', $path);
        unless ($count) {
            my $name = $path =~ s{^.*/}{}r;
            $error = clean($error // 'unreadable track');
            # ExifTool names the file in most messages; the user knows it by its name.
            $error =~ s/\Q$path\E/$name/g;
            undef $tagger;
            return "error\t$name: $error\n";
        }
    }
    my $geotag = $tagger->GetNewValue('Geotag');
    my $points = $$geotag{Points};
    my @times = sort { $a <=> $b } keys %$points;
    # The map draws what ExifTool will interpolate: positions only.
    my $answer = '';
    foreach my $time (@times) {
        my $fix = $$points{$time};
        next unless defined $$fix{lat} and defined $$fix{lon};
        $answer .= join("\t", 'point', $time, $$fix{lat}, $$fix{lon}, $$fix{first} ? 1 : 0) . "\n";
    }
    return $answer;
}

sub setOptions
{
    ($maxGap, $maxExtension, $sync) = map { $_ + 0 } @_;
    return '' unless $tagger;
    $tagger->Options(GeoMaxIntSecs => $maxGap, GeoMaxExtSecs => $maxExtension);
    # A simple offset replaces the one before; no drift between several points is kept.
    $tagger->SetNewValue('Geosync', sprintf('%+.3f', $sync));
    return '';
}

# Why ExifTool placed nothing: its message, and for a gap the gap's length around the time.
sub miss
{
    my ($id, $time, $message) = @_;
    my $kind = $message =~ /before track/ ? 'before'
             : $message =~ /beyond track/ ? 'after'
             : $message =~ /nearest GPS fix/ ? 'gap' : 'other';
    my $seconds = 0;
    if ($kind eq 'gap' and $time =~ /^(\d{4}):(\d\d):(\d\d) (\d\d):(\d\d):(\d\d)(\.\d+)?Z$/) {
        my $at = Time::Local::timegm($6, $5, $4, $3, $2 - 1, $1) + ($7 || 0) + $sync;
        my $times = $tagger->GetNewValue('Geotag')->{Times};
        my ($low, $high) = (0, $#$times);
        while ($high > $low + 1) {
            my $middle = int(($low + $high) / 2);
            ($at < $$times[$middle] ? $high : $low) = $middle;
        }
        $seconds = $$times[$high] - $$times[$low];
    }
    return join("\t", 'miss', $id, $kind, $seconds, clean($message)) . "\n";
}

sub place
{
    my ($count) = @_;
    my @requests;
    for (1 .. $count) {
        my $line = <STDIN>;
        last unless defined $line;
        $line =~ s/\r?\n$//;
        push @requests, [ split /\t/, $line, 2 ];
    }
    my $answer = '';
    foreach my $request (@requests) {
        my ($id, $time) = @$request;
        unless ($tagger) {
            $answer .= "miss\t$id\tother\t0\tNo GPS track loaded\n";
            next;
        }
        # What writing Keys:Geotime runs, called directly: to QuickTime alone ExifTool sets one
        # coordinate triple and nothing else, the same position it would write anywhere, for a
        # fraction of the work; without the tag's own wrapping it costs half again as little.
        my $error = Image::ExifTool::Geotag::SetGeoValues($tagger, $time, 'Keys');
        my $coordinates = $tagger->GetNewValue('Keys:GPSCoordinates');
        # The stored form is ISO 6709: "+48.8583+002.2944+35.000/".
        if (not ($error and $error =~ /\S/) and defined $coordinates
            and $coordinates =~ m{^([-+][\d.]+)([-+][\d.]+)([-+][\d.]+)?/?$}) {
            my ($latitude, $longitude, $altitude) = ($1 + 0, $2 + 0, defined $3 ? $3 + 0 : '');
            $answer .= join("\t", 'fix', $id, $latitude, $longitude, $altitude) . "\n";
        } else {
            $answer .= miss($id, $time, $error // 'No position');
        }
    }
    return $answer;
}

while (defined(my $line = <STDIN>)) {
    $line =~ s/\r?\n$//;
    my ($verb, @fields) = split /\t/, $line, -1;
    my $answer = eval {
        return load(@fields) if $verb eq 'load';
        return setOptions(@fields) if $verb eq 'options' and @fields == 3;
        return place($fields[0]) if $verb eq 'place' and @fields == 1 and $fields[0] =~ /^\d+$/;
        return "error\tmalformed request\n";
    };
    $answer = "error\t" . clean("$@") . "\n" unless defined $answer;
    print STDOUT $answer, "done\n";
    STDOUT->flush();
}
exit 0;

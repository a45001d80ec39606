# perl client.pl WSDL URL VERSION: calls what standard input asks for, a line each, and prints each answer.
use strict;
use warnings;
use JSON::PP;
use SOAP::Lite;

# The service tells its types; this client reads texts and needs none.
package Untyped
{
    our @ISA = ('SOAP::Deserializer');
    sub decode_value
    {
        my ($self, $element) = @_;
        delete $element->[1]{'{http://www.w3.org/2001/XMLSchema-instance}type'};
        return $self->SUPER::decode_value($element);
    }
}

my (undef, $url, $version) = @ARGV;
my $namespace = 'urn:schemas-varlo-com:service:VideoAnalytics:2';
my $client = SOAP::Lite->soapversion($version)->proxy($url)->autotype(0)->readable(0)
    ->ns($namespace, 'va')->envprefix('soap')->encoding('UTF-8');
$client->on_action(sub { '""' });
$client->on_fault(sub { $_[1] });
$client->deserializer(Untyped->new);

# A list of behaviors is an element of elements, all else a text.
sub element
{
    my ($name, $value) = @_;
    return SOAP::Data->name($name => $value)->type($value =~ /^-?\d+$/ ? 'int' : 'string') unless ref $value;
    my @items = map { SOAP::Data->name(behavior => $_)->type('string') } @{ $value->{behavior} };
    return SOAP::Data->name($name => \SOAP::Data->value(@items));
}

sub plain
{
    my ($som, %values) = @_;
    $values{profiles} = [map { { id => $_->attr->{id}, name => $_->value,
            active => ($_->attr->{active} // '') eq 'true' ? JSON::PP::true : JSON::PP::false } }
            $som->dataof('//profileList/profile')] if $som->match('//profileList');
    $values{behaviors} = [map { { type => $_->{type}, availability => $_->{availability} } }
            $som->valueof('//behaviors/behavior')] if $som->match('//behaviors');
    for my $name (qw(profileId config scene))
    {
        $values{$name} = $som->valueof("//$name") if defined $som->valueof("//$name");
    }
    return \%values;
}

my $json = JSON::PP->new->utf8;
$| = 1;
while (my $line = <STDIN>)
{
    my ($operation, $parameters) = @{ $json->decode($line) };
    my $som = $client->call("va:$operation", map { element($_, $parameters->{$_}) } sort keys %$parameters);
    die "no answer: $som\n" unless ref $som;
    my $fault = $version eq '1.2' ? ['//Fault/Code/Value', '//Fault/Reason/Text'] : ['//faultcode', '//faultstring'];
    print $json->encode($som->fault ? { code => $som->valueof($fault->[0]), fault => $som->valueof($fault->[1]) }
        : { result => plain($som) }), "\n";
}
